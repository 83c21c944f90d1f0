#include "look.h"

#include <utility>

#include "display_codes.h"
#include "halo.h"
#include "view.h"

namespace lumivar {

LookedAt look_at(LinearImage light, const Look& look) {
    add_halo(light, look.halo);
    expose(light, look.exposure);
    Encoding encoding = Encoding::Srgb;
    switch (look.view) {
        case Look::View::Plain:
            break;
        case Look::View::Photo:
            view_as_photo(light);
            break;
        case Look::View::Managed:
            view_managed(light, look.managed);
            encoding = Encoding::Done;
            break;
    }
    if (look.bits == 16) {
        return codes_16(light, encoding);
    }
    if (look.view == Look::View::Plain) {
        return codes_8(light, encoding);
    }
    return dithered_codes_8(light, encoding);
}

}  // namespace lumivar
