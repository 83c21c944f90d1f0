#include <libimgops/draw_path.h>

namespace {

DrawPath path_in_use = DrawPath::Fast;

}  // namespace

DrawPath draw_path() { return path_in_use; }

void set_draw_path(DrawPath path) { path_in_use = path; }
