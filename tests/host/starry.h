// The plug-in as it ships, in a bundle of the test's own with a few stars beside it, and a scene
// that looks at them. Needs LUMIVAR_MODULE.
#pragma once

#include <gtest/gtest.h>
#include <host/camera.h>
#include <host/session.h>
#include <support/catalogue.h>
#include <support/scratch.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "violations.h"

namespace starry {

inline constexpr double kRa = 83.0;
inline constexpr double kDec = -1.0;

inline support::CatalogueStar star_at(double ra, double dec, float luminance) {
    support::CatalogueStar star;
    star.lon = ra;
    star.lat = dec;
    star.luminance = luminance;
    return star;
}

/// Stars around the centre of the view, from far too bright to hardly seen.
inline std::vector<support::CatalogueStar> few_stars() {
    std::vector<support::CatalogueStar> stars = {
        star_at(kRa, kDec, 1.0F), star_at(kRa + 4, kDec + 2, 0.2F),
        star_at(kRa - 6, kDec - 3, 0.02F), star_at(kRa + 8, kDec - 4, 0.004F)};
    stars[1].g = 180;
    stars[1].b = 90;
    stars[2].r = 120;
    return stars;
}

/// Looks at the stars, 24 degrees high, 24 frames a second.
inline host::Scene starry_scene() {
    host::Scene scene;
    scene.source = "test";
    scene.composition.width = 96;
    scene.composition.height = 54;
    scene.composition.duration = 2.0;
    scene.camera = host::look_at_camera(kRa, kDec, 0.0, host::Lens::vertical_fov(24.0, 54));
    return scene;
}

inline void set(host::Scene& scene, const std::string& name,
                decltype(host::ControlSetting::value) value) {
    scene.controls.push_back({name, "test: /controls/" + name, std::move(value)});
}

/// The bytes of all pixels, row by row, without padding.
inline std::vector<std::byte> bytes(const host::Frame& frame) { return frame.world.packed(); }

/// Whether any pixel differs from another: stars on black.
inline bool shows_stars(const host::Frame& frame) {
    const std::vector<std::byte> all = bytes(frame);
    const int pixel = bytes_per_pixel(frame.world.depth());
    return !std::equal(all.begin() + pixel, all.end(), all.begin());
}

class Lumivar : public testing::Test {
protected:
    Lumivar() {
        std::filesystem::create_directories(executable().parent_path());
        std::filesystem::copy_file(LUMIVAR_MODULE, executable());
    }

    void add_stars(const std::string& name = "sky.stars",
                   const std::vector<support::CatalogueStar>& stars = few_stars()) {
        support::write_catalogue(root / name, support::kVersion2, stars);
    }
    std::filesystem::path bundle() const { return root / "Lumivar.plugin"; }
    std::filesystem::path executable() const {
        return root / "Lumivar.plugin/Contents/MacOS/Lumivar";
    }

    /// Frame 0 of a scene.
    host::Frame render(const host::Scene& scene, const host::RenderOptions& options = {}) {
        host::Session session(bundle());
        host::Frame frame = session.render(scene, scene.composition.frame_time(0), options);
        EXPECT_EQ(joined(frame.violations), "");
        return frame;
    }

    ScratchFolder root;
};

}  // namespace starry
