#include "jpeg_file.h"

#include <osapi/whole_file.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
// Behind the C library's, whose types its header takes for granted.
#include <jpeglib.h>

#include <csetjmp>
#include <exception>
#include <memory>
#include <span>
#include <string>
#include <string_view>
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

/// Hands the library's bytes on to the file, some at a time. What the file throws is kept, since
/// the library is of C.
struct Destination : jpeg_destination_mgr {
    AtomicFile* file = nullptr;
    std::exception_ptr failure;
    std::array<JOCTET, 65536> buffer;

    /// Writes what is in the buffer but for its last `unused` bytes, and empties it.
    bool write(std::size_t unused) {
        try {
            file->write(std::as_bytes(std::span(buffer.data(), buffer.size() - unused)));
        } catch (...) {
            failure = std::current_exception();
        }
        next_output_byte = buffer.data();
        free_in_buffer = buffer.size();
        return !failure;
    }
};

Destination& destination(j_compress_ptr jpeg) { return *static_cast<Destination*>(jpeg->dest); }
void begin_writing(j_compress_ptr jpeg) {
    jpeg->dest->next_output_byte = destination(jpeg).buffer.data();
    jpeg->dest->free_in_buffer = destination(jpeg).buffer.size();
}
/// The library asks when the buffer is full, whatever it says of the bytes that are free.
boolean write_buffer(j_compress_ptr jpeg) {
    if (!destination(jpeg).write(0)) {
        jpeg->err->error_exit(reinterpret_cast<j_common_ptr>(jpeg));
    }
    return TRUE;
}
void end_writing(j_compress_ptr jpeg) {
    if (!destination(jpeg).write(jpeg->dest->free_in_buffer)) {
        jpeg->err->error_exit(reinterpret_cast<j_common_ptr>(jpeg));
    }
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

void write_marker(jpeg_compress_struct& jpeg, int marker, std::string_view bytes) {
    if (!bytes.empty()) {
        jpeg_write_marker(&jpeg, marker, reinterpret_cast<const JOCTET*>(bytes.data()),
                          static_cast<unsigned int>(bytes.size()));
    }
}

/// In as many markers as it takes, of whole lines where lines are shorter than a marker. The end of
/// a marker stands for the end of its last line.
void write_comments(jpeg_compress_struct& jpeg, std::string_view text) {
    while (text.size() > kLongestMarker) {
        const std::size_t line_end = text.rfind('\n', kLongestMarker);
        const bool found = line_end != std::string_view::npos && line_end > 0;
        write_marker(jpeg, JPEG_COM, text.substr(0, found ? line_end : kLongestMarker));
        text.remove_prefix(found ? line_end + 1 : kLongestMarker);
    }
    write_marker(jpeg, JPEG_COM, text);
}

/// Between `setjmp` and the end no object with a destructor is made. False: the library jumped
/// back.
bool write_all(jpeg_compress_struct& jpeg, Trouble& trouble, Destination& to,
               const SampleRows& rows, std::string_view comment, std::string_view exif,
               std::byte* row) {
    if (setjmp(trouble.back) != 0) {
        return false;
    }
    jpeg_create_compress(&jpeg);
    jpeg.dest = &to;
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
    write_comments(jpeg, comment);
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
    jpeg_create_decompress(&jpeg);
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
    const std::string description = description_of(info);
    const std::string exif = exif_of(description);
    std::vector<std::byte> row(rows.row_bytes());
    Destination to;
    to.init_destination = begin_writing;
    to.empty_output_buffer = write_buffer;
    to.term_destination = end_writing;
    to.file = &file;
    Trouble trouble;
    take_trouble(trouble);
    jpeg_compress_struct jpeg = {};
    jpeg.err = &trouble;
    // What was never made is nothing to take down.
    const auto destroy = [](jpeg_compress_struct* made) { jpeg_destroy_compress(made); };
    const std::unique_ptr<jpeg_compress_struct, decltype(destroy)> owner(&jpeg, destroy);
    if (!write_all(jpeg, trouble, to, rows, description, exif, row.data())) {
        if (to.failure) {
            std::rethrow_exception(to.failure);
        }
        throw Failure("cannot write " + file.path().string() + ": " + trouble.text.data());
    }
}

PictureDetails read_jpeg_details(const std::filesystem::path& path) {
    constexpr std::size_t kLargest = std::size_t{1} << 30;
    const std::string bytes = OSAPI::read_whole(path.c_str(), kLargest);
    Trouble trouble;
    take_trouble(trouble);
    jpeg_decompress_struct jpeg = {};
    jpeg.err = &trouble;
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
