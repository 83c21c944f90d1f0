// Images: specs and the pixels they describe.
#include <base/exceptions.h>
#include <libkelvimage/core.h>
#include <libkelvimage/image.h>

#include <cstdio>
#include <cstring>

namespace Kelv {

namespace {

constexpr int kDeadSize = -666;

// A compiler drops plain stores to a dying object; this one it must keep.
template <class T>
void poison(T& member, T value) {
    volatile T& kept = member;
    kept = value;
}

}  // namespace

ImageSpec::ImageSpec(int w, int h, unsigned int s, PixelFormat f)
    : width(w), height(h), stride(s), format(f) {}

ImageSpec::ImageSpec(int w, int h, PixelFormat f) : ImageSpec(w, h, natural_stride(w, f), f) {}

void ImageSpec::print() const {
    std::printf("%-15s\t%d x %d", pixel_format_str(format), width, height);
}

bool ImageSpec::operator==(const ImageSpec& other) const {
    return width == other.width && height == other.height && stride == other.stride &&
           format == other.format;
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
    // An image may be copied onto itself.
    std::memmove(block_, src.block_, allocated_size);
}

void Image::dump() const {
    std::printf("Image (allocated_size %lu at %p) ", allocated_size, static_cast<void*>(pixels));
    print();
}

}  // namespace Kelv
