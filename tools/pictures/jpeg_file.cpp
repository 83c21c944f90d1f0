#include "jpeg_file.h"

#include <osapi/whole_file.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
// Behind the C library's, whose types its header takes for granted.
#include <jpeglib.h>

#include <csetjmp>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "failure.h"
#include "program_version.h"

namespace lumivar {
namespace {

constexpr int kQuality = 95;
/// A marker counts its bytes, and itself, in 16 bits.
constexpr std::size_t kLongestMarker = 65533;

/// The library leaves its functions by a jump; nothing with a destructor may be passed over by it.
struct Trouble : jpeg_error_mgr {
    std::jmp_buf back;
    std::array<char, JMSG_LENGTH_MAX> text;
};

void note_error(j_common_ptr shared) {
    auto* const trouble = static_cast<Trouble*>(shared->err);
    trouble->format_message(shared, trouble->text.data());
    std::longjmp(trouble->back, 1);
}
void print_nothing(j_common_ptr) {}

void take_trouble(Trouble& trouble) {
    jpeg_std_error(&trouble);
    trouble.error_exit = note_error;
    trouble.output_message = print_nothing;
    trouble.text = {};
}

void append_number(std::string& bytes, std::uint32_t number, int size) {
    for (int at = 0; at < size; ++at) {
        bytes += static_cast<char>(number >> (8 * at) & 0xFFU);
    }
}

/// Software and description where programs for photographs look: a directory of two entries, as
/// TIFF has them, with the lowest byte first. Empty when it does not fit.
std::string exif_of(const std::string& description) {
    constexpr std::uint32_t kDescriptionTag = 0x010E;
    constexpr std::uint32_t kSoftwareTag = 0x0131;
    constexpr std::uint32_t kText = 2;
    // The directory begins behind 8 bytes and takes 2, 12 for each entry, and 4.
    constexpr std::uint32_t kBehindDirectory = 8 + 2 + 2 * 12 + 4;
    const std::string software = kProgramVersion;
    const auto size = [](const std::string& text) {
        return static_cast<std::uint32_t>(text.size()) + 1;
    };
    std::string bytes("Exif\0\0II*\0", 10);
    append_number(bytes, 8, 4);
    append_number(bytes, 2, 2);
    std::uint32_t place = kBehindDirectory;
    for (const auto& [tag, text] :
         {std::pair(kDescriptionTag, description), std::pair(kSoftwareTag, software)}) {
        append_number(bytes, tag, 2);
        append_number(bytes, kText, 2);
        append_number(bytes, size(text), 4);
        append_number(bytes, place, 4);
        place += size(text);
    }
    append_number(bytes, 0, 4);
    bytes.append(description).append(1, '\0').append(software).append(1, '\0');
    return bytes.size() > kLongestMarker ? "" : bytes;
}

void write_marker(jpeg_compress_struct& jpeg, int marker, const std::string& bytes) {
    if (!bytes.empty() && bytes.size() <= kLongestMarker) {
        jpeg_write_marker(&jpeg, marker, reinterpret_cast<const JOCTET*>(bytes.data()),
                          static_cast<unsigned int>(bytes.size()));
    }
}

/// Between `setjmp` and the end no object with a destructor is made. False: the library jumped
/// back.
bool write_all(jpeg_compress_struct& jpeg, Trouble& trouble, const SampleRows& rows,
               const std::string& comment, const std::string& exif, std::byte* row) {
    if (setjmp(trouble.back) != 0) {
        return false;
    }
    jpeg.image_width = static_cast<JDIMENSION>(rows.width);
    jpeg.image_height = static_cast<JDIMENSION>(rows.height);
    jpeg.input_components = 3;
    jpeg.in_color_space = JCS_RGB;
    jpeg_set_defaults(&jpeg);
    jpeg_set_quality(&jpeg, kQuality, TRUE);
    // A star's colour is as sharp as its light.
    for (int component = 0; component < jpeg.num_components; ++component) {
        jpeg.comp_info[component].h_samp_factor = 1;
        jpeg.comp_info[component].v_samp_factor = 1;
    }
    jpeg_start_compress(&jpeg, TRUE);
    write_marker(jpeg, JPEG_APP0 + 1, exif);
    write_marker(jpeg, JPEG_COM, comment);
    for (int y = 0; y < rows.height; ++y) {
        rows.read(y, row);
        auto* samples = reinterpret_cast<JSAMPROW>(row);
        jpeg_write_scanlines(&jpeg, &samples, 1);
    }
    jpeg_finish_compress(&jpeg);
    return true;
}

/// False: the library jumped back.
bool read_all(jpeg_decompress_struct& jpeg, Trouble& trouble, const std::string& bytes,
              std::vector<JSAMPLE>& row, std::string& comments) {
    if (setjmp(trouble.back) != 0) {
        return false;
    }
    jpeg_mem_src(&jpeg, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
    jpeg_save_markers(&jpeg, JPEG_COM, 0xFFFF);
    jpeg_read_header(&jpeg, TRUE);
    jpeg_start_decompress(&jpeg);
    row.resize(std::size_t{jpeg.output_width} * static_cast<std::size_t>(jpeg.output_components));
    while (jpeg.output_scanline < jpeg.output_height) {
        JSAMPROW samples = row.data();
        jpeg_read_scanlines(&jpeg, &samples, 1);
    }
    // The end of the work takes the markers with it.
    for (const jpeg_marker_struct* marker = jpeg.marker_list; marker != nullptr;
         marker = marker->next) {
        if (marker->marker == JPEG_COM) {
            comments.append(reinterpret_cast<const char*>(marker->data), marker->data_length);
            comments.append(1, '\n');
        }
    }
    jpeg_finish_decompress(&jpeg);
    return true;
}

}  // namespace

void write_jpeg(AtomicFile& file, const SampleRows& rows, const PictureInfo& info) {
    struct Target {
        unsigned char* bytes = nullptr;
        unsigned long size = 0;
        ~Target() { std::free(bytes); }
    } target;
    Trouble trouble;
    take_trouble(trouble);
    jpeg_compress_struct jpeg = {};
    jpeg.err = &trouble;
    jpeg_create_compress(&jpeg);
    const auto destroy = [](jpeg_compress_struct* made) { jpeg_destroy_compress(made); };
    const std::unique_ptr<jpeg_compress_struct, decltype(destroy)> owner(&jpeg, destroy);
    jpeg_mem_dest(&jpeg, &target.bytes, &target.size);
    const std::string description = description_of(info);
    std::vector<std::byte> row(rows.row_bytes());
    if (!write_all(jpeg, trouble, rows, description, exif_of(description), row.data())) {
        throw Failure("cannot write " + file.path().string() + ": " + trouble.text.data());
    }
    file.write(std::as_bytes(std::span(target.bytes, target.size)));
}

PictureDetails read_jpeg_details(const std::filesystem::path& path) {
    constexpr std::size_t kLargest = std::size_t{1} << 30;
    const std::string bytes = OSAPI::read_whole(path.c_str(), kLargest);
    Trouble trouble;
    take_trouble(trouble);
    jpeg_decompress_struct jpeg = {};
    jpeg.err = &trouble;
    jpeg_create_decompress(&jpeg);
    const auto destroy = [](jpeg_decompress_struct* made) { jpeg_destroy_decompress(made); };
    const std::unique_ptr<jpeg_decompress_struct, decltype(destroy)> owner(&jpeg, destroy);
    std::vector<JSAMPLE> row;
    std::string comments;
    if (!read_all(jpeg, trouble, bytes, row, comments)) {
        throw Failure("cannot read the picture " + path.string() + ": " + trouble.text.data());
    }
    // The library fills up what is missing and goes on.
    if (trouble.num_warnings > 0) {
        throw Failure("cannot read the picture " + path.string() + ": it is damaged");
    }
    PictureDetails details;
    add_described(comments, details);
    return details;
}

}  // namespace lumivar
