#include "scene_readers.h"
#include "track_reader.h"

namespace host {

Picture read_picture(const JsonNode& node) {
    node.expect_members({"exposure", "view", "halo", "limiting_magnitude"});
    Picture picture;
    if (node.has("exposure")) {
        picture.exposure = read_constant(node["exposure"], number_from(-100, 100));
    }
    if (node.has("view")) {
        const JsonNode view = node["view"];
        if (!view.is_string() || (view.string() != "photo" && view.string() != "plain")) {
            view.fail("\"photo\" or \"plain\"");
        }
        picture.view = view.string();
    }
    if (node.has("halo")) {
        picture.halo = read_constant(node["halo"],
                                     {"a number not below 0", [](double x) { return x >= 0.0; }});
    }
    if (node.has("limiting_magnitude")) {
        const JsonNode limit = node["limiting_magnitude"];
        picture.limiting_magnitude = read_track(limit, any_number());
        picture.limiting_magnitude_place = limit.place();
    }
    return picture;
}

}  // namespace host
