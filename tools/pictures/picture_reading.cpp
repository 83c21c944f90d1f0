#include "picture_reading.h"

#include <base/exceptions.h>

#include <new>

#include "exr_file.h"
#include "failure.h"
#include "jpeg_file.h"
#include "picture_file.h"
#include "png_file.h"
#include "tiff_file.h"

namespace lumivar {

PictureDetails read_picture_details(const std::filesystem::path& path) {
    try {
        switch (picture_format(path).value_or(PictureFormat::Exr)) {
            case PictureFormat::Exr:
                return read_exr_details(path);
            case PictureFormat::Tiff:
                return read_tiff_details(path);
            case PictureFormat::Png:
                return read_png_details(path);
            case PictureFormat::Jpeg:
                return read_jpeg_details(path);
        }
    } catch (const StrXception& failure) {
        throw system_failure("cannot read the picture " + path.string(), failure);
    } catch (const std::bad_alloc&) {
        // A library believes what a damaged file says of its sizes, before it has read as much.
        throw Failure("cannot read the picture " + path.string() + ": it wants too much memory");
    }
    return {};
}

}  // namespace lumivar
