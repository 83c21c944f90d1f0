// The move that the other formats are tried with, in USD: keyed at each sample of the shutter, as
// angles in axes with y up and as matrices in the sky's own axes.
#include <gtest/gtest.h>
#include <host/camera.h>

#include <cmath>
#include <functional>
#include <string>

#include "one_move.h"
#include "one_move_camera.h"
#include "support/scratch.h"
#include "usd_here.h"

namespace {

using one_move::Moment;

/// "NAME.timeSamples = { CODE: VALUE, ... }", a time code being a frame.
std::string usd_samples(const std::string& name,
                        const std::function<std::string(const Moment&)>& value) {
    std::string text = "    " + name + ".timeSamples = {\n";
    for (const Moment& m : one_move::moments()) {
        text.append(one_move::joined({m.frame}, "")).append(": ").append(value(m)).append(",\n");
    }
    return text + "    }\n";
}

std::string usd_tuple(const one_move::Vector& v) {
    return "(" + one_move::joined({v[0], v[1], v[2]}, ", ") + ")";
}

std::string usd_row(const one_move::Vector& v, const char* last) {
    return "(" + one_move::joined({v[0], v[1], v[2]}, ", ") + ", " + last + ")";
}

std::string usd_stage(const std::string& up_axis, const std::string& operations) {
    return "#usda 1.0\n(\n    timeCodesPerSecond = 24\n    upAxis = \"" + up_axis +
           "\"\n)\ndef Camera \"shot\"\n{\n    float horizontalAperture = 36\n" +
           usd_samples("float focalLength",
                       [](const Moment& m) {
                           const double half = std::tan(m.vertical_fov * one_move::kDegree / 2);
                           const double height = 36.0 * one_move::kHeight / one_move::kWidth;
                           return one_move::joined({height / 2 / half}, "");
                       }) +
           operations + "}\n";
}

void expect_the_move_of(const std::string& stage) {
    const ScratchFolder folder;
    write_file(folder / "move.usda", stage);
    const auto camera = one_move::camera_of(folder / "move.usda");
    for (const Moment& moment : one_move::moments()) {
        const double time = moment.frame / one_move::kFramesPerSecond;
        for (const one_move::Star& star : one_move::stars()) {
            const one_move::Pixel want = one_move::seen(moment, star);
            const one_move::Pixel got = one_move::drawn(*camera, time, star);
            ASSERT_NEAR(got.x, want.x, 0.02) << "frame " << moment.frame;
            ASSERT_NEAR(got.y, want.y, 0.02) << "frame " << moment.frame;
        }
    }
}

}  // namespace

TEST(OneMoveInUsd, AsAnglesWithYUp) {
    SKIP_WITHOUT_USD();
    expect_the_move_of(
        usd_stage("Y", usd_samples("double3 xformOp:translate",
                                   [](const Moment& m) { return usd_tuple(m.position); }) +
                           usd_samples("double3 xformOp:rotateZXY",
                                       [](const Moment& m) { return usd_tuple(m.angles); }) +
                           "    uniform token[] xformOpOrder = [\"xformOp:translate\", "
                           "\"xformOp:rotateZXY\"]\n"));
}

TEST(OneMoveInUsd, AsMatricesWithZUp) {
    SKIP_WITHOUT_USD();
    const auto matrix = [](const Moment& m) {
        std::string rows = "(";
        rows.append(usd_row(one_move::in_sky(m.axis({1, 0, 0})), "0")).append(", ");
        rows.append(usd_row(one_move::in_sky(m.axis({0, 1, 0})), "0")).append(", ");
        rows.append(usd_row(one_move::in_sky(m.axis({0, 0, 1})), "0")).append(", ");
        return rows.append(usd_row(one_move::in_sky(m.position), "1")).append(")");
    };
    expect_the_move_of(
        usd_stage("Z", usd_samples("matrix4d xformOp:transform", matrix) +
                           "    uniform token[] xformOpOrder = [\"xformOp:transform\"]\n"));
}
