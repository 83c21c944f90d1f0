// Pixels in memory: a description by size, stride and format, and an owner of such pixels.
//
// Sizes are worked out in 32-bit unsigned arithmetic and wrap around: who builds a spec from
// foreign numbers checks them first.
#pragma once

#include <base/scoped_ptr.h>
#include <base/words.h>

#include <concepts>

class String;
template <class T>
class Matrix4;

namespace Kelv {

/// The types of named values that travel with an image.
template <class T>
concept MetaValue =
    std::same_as<T, float> || std::same_as<T, String> || std::same_as<T, Matrix4<float>>;

/// Size, row stride and pixel format of a raster, and the named values that travel with it.
///
/// A copy has a record of values of its own.
class ImageSpec {
public:
    /// The values are part of the file formats; the gaps are unassigned and refused.
    enum PixelFormat : int {
        BGRA_U8 = 1,
        G_U8 = 3,
        /// Four floats a pixel: blue, green, red, alpha.
        BGRA_FLOAT = 4,
        G_FLOAT = 6,
        YCBCR_422_8 = 7,
        DV_NTSC = 10,
        YCBCR_422_10 = 11,
        YCBCR_444_FLOAT = 12,
        CINEON = 13,
        G_U16 = 14,
        DV100_1080i60 = 15,
        DV50_NTSC = 16,
        BGRA_U16 = 17,
        DNXHD_1080i60_10BIT = 18,
        INVALID_FORMAT = 9999,
    };

    // Told in libkelvimage/metadata.h.
    class MetaData;
    class MetaVisitor;

    /// Leaves the numbers unset. No specs have values to begin with.
    ImageSpec();
    ImageSpec(int width, int height, unsigned int stride, PixelFormat format);
    /// With the natural stride.
    ImageSpec(int width, int height, PixelFormat format);
    ImageSpec(const ImageSpec& other);
    /// Unchanged when there is no memory for the values.
    ImageSpec& operator=(const ImageSpec& other);
    ~ImageSpec() noexcept;

    /// The format's name. Throws `StrXception` "unknown format" for an unassigned value.
    static const char* pixel_format_str(PixelFormat format);
    /// Whole bytes of one pixel; 0 for packed and compressed formats, whose rows are not a whole
    /// number of pixels. Throws like `pixel_format_str`.
    static u32 bytes_per_pixel(PixelFormat format);
    u32 bytes_per_pixel() const { return bytes_per_pixel(format); }

    /// Bytes of one row of `width` pixels, truncated to 32 bits. The camera formats come in one
    /// width only: any other is an `AssertXception`. Throws like `pixel_format_str`.
    static u32 natural_stride(int width, PixelFormat format);
    void set_natural_stride() { stride = natural_stride(width, format); }

    /// Name, size and every named value on standard output, without a line feed. Throws like
    /// `pixel_format_str`.
    void print() const;

    /// Whether there is a record of named values, be it an empty one.
    bool has_metadata() const { return static_cast<bool>(metadata); }
    /// Adds or replaces a value of the record, which is made if there is none; see
    /// `MetaData::set_meta`.
    template <MetaValue T>
    void set_meta(const char* type, const char* name, const T& value);
    /// See `MetaData::get_meta`; 1 if there is no record.
    template <MetaValue T>
    int get_meta(const char* type, const char* name, T& value) const;
    /// Calls `visitor` for each value; see `MetaData::for_each_meta`.
    void for_each_meta(MetaVisitor& visitor) const;

    /// Equal numbers and equal values. A spec with a record never equals one without.
    bool operator==(const ImageSpec& other) const;
    bool operator!=(const ImageSpec& other) const { return !(*this == other); }

    /// Pixels in a row.
    int width;
    /// Rows.
    int height;
    /// Bytes from one row to the next.
    unsigned int stride;
    PixelFormat format;
    /// The record of named values; null until the first is set.
    scoped_ptr<MetaData> metadata;
};

/// Owns the pixels of one spec. Not copyable as a whole; see `copy_from`.
///
/// After destruction its `ImageSpec` reads `INVALID_FORMAT`, width and height -666 and stride 0,
/// which makes a use after it recognisable.
class Image : public ImageSpec {
public:
    /// Allocates pixels, not cleared. Asserts that the format is not `INVALID_FORMAT`. Throws as
    /// `alloc`.
    explicit Image(const ImageSpec& spec);
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;
    ~Image();

    /// Allocates `height` x `stride` bytes (modulo 2^32) for an image that holds none. Throws
    /// `StrXception` "ImageSpec stride is too small for width ..." and "out of memory".
    void alloc();
    /// Gives the pixels back; there are none then.
    void free();
    /// Sets every byte to zero: black and transparent. Does nothing while there are no pixels.
    void make_blank();
    /// Copies the pixels of an image with the same width, height, format and stride, which must
    /// have pixels if this one has. Throws `StrXception` "formats don't match" (and a line feed).
    void copy_from(const Image& src);

    /// First byte of row `y`, counted from the top; no bounds check. The offset is taken modulo
    /// 2^32.
    char* line(int y) const {
        const u32 offset = static_cast<u32>(y) * stride;
        return pixels + static_cast<uword>(offset);
    }
    /// The same address as floats.
    float* line_float(int y) const { return static_cast<float*>(static_cast<void*>(line(y))); }

    /// Size and address of the pixels on standard output, then its `ImageSpec`.
    void dump() const;

    /// Row 0.
    char* pixels = nullptr;

private:
    char* block_ = nullptr;

public:
    /// Bytes of the pixels.
    uword allocated_size = 0;
};

}  // namespace Kelv
