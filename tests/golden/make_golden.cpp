// Makes the golden pictures: make_golden FOLDER writes them there.
#include <cstdio>
#include <exception>
#include <string>

#include "golden_picture.h"
#include "golden_scene.h"
#include "golden_stars.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_golden FOLDER\n");
        return 2;
    }
    try {
        const auto stars = golden::load_stars(LUMIVAR_DATA "/bright-stars.csv");
        for (const golden::Name& name : golden::names) {
            const std::string scene = name.scene;
            const golden::Frame frame =
                golden::load_frame(LUMIVAR_GOLDEN "/scenes/" + scene + ".json", name.frame);
            golden::write_picture(std::string(argv[1]) + "/" + scene + ".exr",
                                  reference::render(stars, frame.settings, frame.cameras));
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "make_golden: %s\n", error.what());
        return 1;
    }
    return 0;
}
