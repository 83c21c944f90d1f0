// Images: specs and the pixels they describe.
#include <base/exceptions.h>
#include <libkelvimage/core.h>
#include <libkelvimage/image.h>
#include <libkelvimage/metadata.h>

#include <cinttypes>
#include <cstdio>
#include <cstring>

namespace Kelv {

namespace {

constexpr int kDeadSize = -666;

// Compilers drop plain stores to an object that is being destroyed, but keep volatile ones.
template <class T>
void poison(T& member, T value) {
    volatile T& kept = member;
    kept = value;
}

ImageSpec::MetaData* copy_of(const scoped_ptr<ImageSpec::MetaData>& metadata) {
    return metadata ? new ImageSpec::MetaData(*metadata) : nullptr;
}

/// Each value in one line with the others, behind the size of the image.
class MetaPrinter final : public ImageSpec::MetaVisitor {
public:
    void float_meta(const char* type, const char* name, float value, s64& /*position*/) override {
        std::printf(" \"%s %s\" [%f]", type, name, static_cast<double>(value));
    }
    void string_meta(const char* type, const char* name, const String& value,
                     s64& /*position*/) override {
        std::printf(" \"%s %s\" [\"%s\"]", type, name, value.c_str());
    }
    void matrix_meta(const char* type, const char* name, const Matrix4<float>& value,
                     s64& /*position*/) override {
        const auto at = [&value](int r, int c) { return static_cast<double>(value(r, c)); };
        std::printf(
            " \"%s %s\" [%.9e %.9e %.9e %.9e %.9e %.9e %.9e %.9e %.9e %.9e %.9e %.9e %.9e %.9e "
            "%.9e "
            "%.9e]",
            type, name, at(0, 0), at(0, 1), at(0, 2), at(0, 3), at(1, 0), at(1, 1), at(1, 2),
            at(1, 3), at(2, 0), at(2, 1), at(2, 2), at(2, 3), at(3, 0), at(3, 1), at(3, 2),
            at(3, 3));
    }
};

}  // namespace

ImageSpec::ImageSpec() = default;

ImageSpec::ImageSpec(int w, int h, unsigned int s, PixelFormat f)
    : width(w), height(h), stride(s), format(f) {}

ImageSpec::ImageSpec(int w, int h, PixelFormat f) : ImageSpec(w, h, natural_stride(w, f), f) {}

ImageSpec::ImageSpec(const ImageSpec& other)
    : width(other.width),
      height(other.height),
      stride(other.stride),
      format(other.format),
      metadata(copy_of(other.metadata)) {}

// The copy is made before the old values go, so that a spec may be assigned to itself.
// NOLINTNEXTLINE(bugprone-unhandled-self-assignment)
ImageSpec& ImageSpec::operator=(const ImageSpec& other) {
    MetaData* copy = copy_of(other.metadata);
    width = other.width;
    height = other.height;
    stride = other.stride;
    format = other.format;
    metadata.reset(copy);
    return *this;
}

ImageSpec::~ImageSpec() noexcept = default;

void ImageSpec::print() const {
    std::printf("%-15s\t%d x %d", pixel_format_str(format), width, height);
    MetaPrinter printer;
    for_each_meta(printer);
}

bool ImageSpec::operator==(const ImageSpec& other) const {
    if (width != other.width || height != other.height || stride != other.stride ||
        format != other.format || has_metadata() != other.has_metadata()) {
        return false;
    }
    return !has_metadata() || *metadata == *other.metadata;
}

Image::Image(const ImageSpec& spec) : ImageSpec(spec) {
    XASSERT(spec.format != ImageSpec::INVALID_FORMAT);
    alloc();
}

Image::~Image() {
    free();
    poison(format, INVALID_FORMAT);
    poison(width, kDeadSize);
    poison(height, kDeadSize);
    poison(stride, 0U);
}

void Image::alloc() {
    if (stride < bytes_per_pixel() * static_cast<u32>(width)) {
        XTHROW("ImageSpec stride is too small for width - did you forget set_natural_stride?");
    }
    const u32 size = static_cast<u32>(height) * stride;
    block_ = malloc_pixels(size);
    allocated_size = size;
    pixels = block_;
    if (block_ == nullptr) {
        throw Error(Error::kNoMemory);
    }
}

void Image::free() {
    free_pixels(block_, allocated_size);
    block_ = nullptr;
    pixels = nullptr;
    allocated_size = 0;
}

void Image::make_blank() {
    // The C library wants an address even for no bytes.
    if (block_ != nullptr) {
        std::memset(block_, 0, allocated_size);
    }
}

void Image::copy_from(const Image& src) {
    if (width != src.width || height != src.height || format != src.format ||
        stride != src.stride) {
        // The line feed is part of the text, which logs are searched for.
        XTHROW("formats don't match\n");
    }
    // Freed images have no address, which the C library wants even for no bytes.
    if (allocated_size != 0) {
        // An image may be copied onto itself.
        std::memmove(block_, src.block_, allocated_size);
    }
}

void Image::dump() const {
    std::printf("Image (allocated_size %" PRIuPTR " at %p) ", allocated_size,
                static_cast<void*>(pixels));
    print();
}

}  // namespace Kelv
