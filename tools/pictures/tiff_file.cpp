#include "tiff_file.h"

#include <base/printf_format.h>
#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "failure.h"
#include "program_version.h"

namespace lumivar {
namespace {

/// What the library is handed: the file, and what went wrong. It calls back from C, through which
/// nothing is thrown.
struct Target {
    AtomicFile* file = nullptr;
    std::uint64_t position = 0;
    std::uint64_t size = 0;
    std::exception_ptr failure;
    std::string text;
};

PRINTF_FORMAT(4, 0)
int note_error(TIFF*, void* target, const char*, const char* format, std::va_list arguments) {
    std::array<char, 500> text{};
    std::vsnprintf(text.data(), text.size(), format, arguments);
    auto& told = static_cast<Target*>(target)->text;
    try {
        if (told.empty()) {
            told = text.data();
        }
    } catch (const std::bad_alloc&) {
        // Then it is told without its text.
    }
    return 1;
}
int pass_over_warning(TIFF*, void*, const char*, const char*, std::va_list) { return 1; }

tmsize_t read_nothing(thandle_t, void*, tmsize_t) { return 0; }
tmsize_t write_bytes(thandle_t handle, void* bytes, tmsize_t size) {
    auto& target = *static_cast<Target*>(handle);
    try {
        target.file->write(std::as_bytes(
            std::span(static_cast<const char*>(bytes), static_cast<std::size_t>(size))));
        target.position += static_cast<std::uint64_t>(size);
        target.size = std::max(target.size, target.position);
        return size;
    } catch (...) {
        target.failure = target.failure ? target.failure : std::current_exception();
        return -1;
    }
}
toff_t seek(thandle_t handle, toff_t offset, int whence) {
    auto& target = *static_cast<Target*>(handle);
    const std::uint64_t position = whence == SEEK_SET   ? offset
                                   : whence == SEEK_CUR ? target.position + offset
                                                        : target.size + offset;
    try {
        if (position != target.position) {
            target.file->seek(position);
            target.position = position;
        }
        return position;
    } catch (...) {
        target.failure = target.failure ? target.failure : std::current_exception();
        return static_cast<toff_t>(-1);
    }
}
int close_nothing(thandle_t) { return 0; }
toff_t size_of(thandle_t handle) { return static_cast<Target*>(handle)->size; }

/// Errors go to `target`, and warnings if they count, not to standard error.
std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> quiet_options(
    Target& target, bool warnings_count) {
    std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(TIFFOpenOptionsAlloc(),
                                                                             TIFFOpenOptionsFree);
    if (!options) {
        throw std::bad_alloc();
    }
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), note_error, &target);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(),
                                         warnings_count ? note_error : pass_over_warning, &target);
    return options;
}

using Tiff = std::unique_ptr<TIFF, decltype(&TIFFClose)>;

// The library leaves out without a word what it has no memory for.
bool tells_of_alpha(TIFF* tiff) {
    std::uint16_t count = 0;
    const std::uint16_t* kinds = nullptr;
    return TIFFGetField(tiff, TIFFTAG_EXTRASAMPLES, &count, &kinds) == 1 && count == 1 &&
           kinds != nullptr && *kinds == EXTRASAMPLE_ASSOCALPHA;
}
bool has_text(TIFF* tiff, std::uint32_t tag) {
    const char* text = nullptr;
    return TIFFGetField(tiff, tag, &text) == 1 && text != nullptr;
}

/// False: a tag could not be set, for want of memory say.
bool set_tags(TIFF* tiff, const SampleRows& rows, const PictureInfo& info) {
    const bool floats = rows.kind == SampleKind::Floats;
    const int bits = static_cast<int>(8 * sample_bytes(rows.kind));
    const int format = floats ? SAMPLEFORMAT_IEEEFP : SAMPLEFORMAT_UINT;
    const int predictor = floats ? PREDICTOR_FLOATINGPOINT : PREDICTOR_HORIZONTAL;
    constexpr int kRowsInStrip = 32;
    const std::uint16_t alpha = EXTRASAMPLE_ASSOCALPHA;
    const std::string description = description_of(info);
    const auto set = [tiff](std::uint32_t tag, auto... values) {
        return TIFFSetField(tiff, tag, values...) == 1;
    };
    return set(TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(rows.width)) &&
           set(TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(rows.height)) &&
           set(TIFFTAG_SAMPLESPERPIXEL, rows.channels) && set(TIFFTAG_BITSPERSAMPLE, bits) &&
           set(TIFFTAG_SAMPLEFORMAT, format) && set(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB) &&
           set(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) &&
           set(TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT) &&
           (rows.channels != 4 || (set(TIFFTAG_EXTRASAMPLES, 1, &alpha) && tells_of_alpha(tiff))) &&
           set(TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE) &&
           set(TIFFTAG_PREDICTOR, predictor) && set(TIFFTAG_ROWSPERSTRIP, kRowsInStrip) &&
           set(TIFFTAG_SOFTWARE, kProgramVersion) &&
           (description.empty() || set(TIFFTAG_IMAGEDESCRIPTION, description.c_str())) &&
           has_text(tiff, TIFFTAG_SOFTWARE) &&
           (description.empty() || has_text(tiff, TIFFTAG_IMAGEDESCRIPTION));
}

/// Throws what went wrong meanwhile, if anything did.
void require_written(const Target& target, bool written) {
    if (target.failure) {
        std::rethrow_exception(target.failure);
    }
    if (!written) {
        throw Failure("cannot write " + target.file->path().string() + ": " + target.text);
    }
}

}  // namespace

void write_tiff(AtomicFile& file, const SampleRows& rows, const PictureInfo& info) {
    // Compression may make a little more of what cannot be compressed.
    constexpr double kOldKind = 4.0e9;
    const bool is_big =
        static_cast<double>(rows.row_bytes()) * static_cast<double>(rows.height) > kOldKind;
    Target target{&file, 0, 0, nullptr, {}};
    const auto options = quiet_options(target, false);
    Tiff tiff(TIFFClientOpenExt("picture", is_big ? "w8" : "w", &target, read_nothing, write_bytes,
                                seek, close_nothing, size_of, nullptr, nullptr, options.get()),
              TIFFClose);
    require_written(target, tiff != nullptr);
    require_written(target, set_tags(tiff.get(), rows, info));
    std::vector<std::byte> row(rows.row_bytes());
    for (int y = 0; y < rows.height; ++y) {
        rows.read(y, row.data());
        require_written(target, TIFFWriteScanline(tiff.get(), row.data(),
                                                  static_cast<std::uint32_t>(y), 0) == 1);
    }
    require_written(target, TIFFWriteDirectory(tiff.get()) == 1);
    tiff.reset();
    require_written(target, true);
}

PictureDetails read_tiff_details(const std::filesystem::path& path) {
    Target target;
    // What it only warns of is no file of ours: a directory that was cut, a tag that nobody knows.
    const auto options = quiet_options(target, true);
    const Tiff tiff(TIFFOpenExt(path.c_str(), "rm", options.get()), TIFFClose);
    const auto fail = [&]() -> Failure {
        return Failure("cannot read the picture " + path.string() + ": " + target.text);
    };
    if (!tiff) {
        throw fail();
    }
    constexpr tmsize_t kLargestStrip = tmsize_t{1} << 28;
    const tmsize_t size = TIFFIsTiled(tiff.get()) != 0 ? 0 : TIFFStripSize(tiff.get());
    if (size <= 0 || size > kLargestStrip) {
        throw Failure("cannot read the picture " + path.string() + ": it has no strips of pixels");
    }
    std::vector<std::byte> strip(static_cast<std::size_t>(size));
    for (std::uint32_t at = 0; at < TIFFNumberOfStrips(tiff.get()); ++at) {
        if (TIFFReadEncodedStrip(tiff.get(), at, strip.data(), size) < 0) {
            throw fail();
        }
    }
    PictureDetails details;
    const char* description = nullptr;
    if (TIFFGetField(tiff.get(), TIFFTAG_IMAGEDESCRIPTION, &description) == 1 &&
        description != nullptr) {
        add_described(description, details);
    }
    if (!target.text.empty()) {
        throw fail();
    }
    return details;
}

}  // namespace lumivar
