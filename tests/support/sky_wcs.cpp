#include "support/sky_wcs.h"

#include <wcslib/wcs.h>

#include <cmath>
#include <cstring>
#include <numbers>
#include <stdexcept>
#include <string>

namespace support {

struct SkyWcs::State {
    wcsprm wcs{};
    ~State() { wcsfree(&wcs); }
};

namespace {

constexpr double degree = std::numbers::pi / 180;

struct Kind {
    const char* name;
    double pixels_per_unit;  // the library's projection plane counts in degrees
};

Kind kind_of(const SkyView& view) {
    const double half = view.height / 2.0;
    switch (view.projection) {
        case SkyProjection::Tan:
            return {"TAN", view.focal * half * degree};
        case SkyProjection::Sin:
            return {"SIN", half * degree};
        case SkyProjection::Arc:
            return {"ARC", half / 90};
    }
    throw std::invalid_argument("unknown projection");
}

void require(int status) {
    if (status != 0) {
        throw std::runtime_error(std::string("wcslib: ") + wcs_errmsg[status]);
    }
}

void name_axis(char (&field)[72], const std::string& text) {
    std::memcpy(field, text.c_str(), text.size() + 1);
}

}  // namespace

SkyWcs::SkyWcs(const SkyView& view) : state_(std::make_unique<State>()) {
    wcsprm& wcs = state_->wcs;
    wcs.flag = -1;
    require(wcsini(1, 2, &wcs));
    const Kind kind = kind_of(view);
    name_axis(wcs.ctype[0], std::string("RA---") + kind.name);
    name_axis(wcs.ctype[1], std::string("DEC--") + kind.name);
    wcs.crval[0] = view.ra;
    wcs.crval[1] = view.dec;
    // Pixel numbers go through untouched, so the effect's own may be used in place of FITS ones.
    wcs.crpix[0] = view.width / 2.0;
    wcs.crpix[1] = view.height / 2.0;
    // The plane's axes point east and north. With the frame turned by the roll, its up is
    // (sin, cos) and its right (-cos, sin) on them; y runs down and the scale below is negative.
    const double c = std::cos(view.roll * degree);
    const double s = std::sin(view.roll * degree);
    wcs.pc[0] = c;
    wcs.pc[1] = s;
    wcs.pc[2] = -s;
    wcs.pc[3] = c;
    wcs.cdelt[0] = -1 / kind.pixels_per_unit;
    wcs.cdelt[1] = -1 / kind.pixels_per_unit;
    // North is up at the poles too.
    wcs.lonpole = 180;
    require(wcsset(&wcs));
}

SkyWcs::~SkyWcs() = default;

std::optional<SkyPixel> SkyWcs::pixel(double ra, double dec) const {
    const double world[2] = {ra, dec};
    double phi = 0;
    double theta = 0;
    double plane[2] = {};
    double pixels[2] = {};
    int outside = 0;
    const int status = wcss2p(&state_->wcs, 1, 2, world, &phi, &theta, plane, pixels, &outside);
    // The equidistant projection goes on behind, the effect's does not.
    if (outside != 0 || theta < 0) {
        return std::nullopt;
    }
    require(status);
    return SkyPixel{pixels[0], pixels[1]};
}

}  // namespace support
