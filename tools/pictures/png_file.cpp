#include "png_file.h"

#include <osapi/files.h>
#include <osapi/open_mode.h>
#include <png.h>

#include <algorithm>
#include <bit>
#include <csetjmp>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <fstream>
#include <memory>
#include <span>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "failure.h"
#include "program_version.h"

namespace lumivar {
namespace {

/// The library leaves its functions by a jump; nothing with a destructor may be passed over by it.
/// What a stream throws is kept here and thrown again behind the jump.
struct Trouble {
    std::string text;
    std::exception_ptr failure;
};

void note_error(png_structp png, png_const_charp message) {
    auto* const trouble = static_cast<Trouble*>(png_get_error_ptr(png));
    try {
        trouble->text = message;
    } catch (const std::bad_alloc&) {
    }
    png_longjmp(png, 1);
}
void pass_over_warning(png_structp, png_const_charp) {}

/// Whether the call went well; what it threw is kept.
template <class Call>
bool keeps_failure(png_structp png, Call call) {
    try {
        call();
        return true;
    } catch (...) {
        static_cast<Trouble*>(png_get_error_ptr(png))->failure = std::current_exception();
        return false;
    }
}

void write_bytes(png_structp png, png_bytep bytes, png_size_t size) {
    auto* const file = static_cast<AtomicFile*>(png_get_io_ptr(png));
    if (!keeps_failure(png, [&] { file->write(std::as_bytes(std::span(bytes, size))); })) {
        png_error(png, "write");
    }
}
void flush_nothing(png_structp) {}

void read_bytes(png_structp png, png_bytep bytes, png_size_t size) {
    auto* const file = static_cast<OSAPI::DiskFile*>(png_get_io_ptr(png));
    std::size_t got = 0;
    const bool read = keeps_failure(png, [&] {
        while (got < size) {
            const sword piece = file->read_short(reinterpret_cast<char*>(bytes + got), size - got);
            if (piece == 0) {
                break;
            }
            got += static_cast<std::size_t>(piece);
        }
    });
    if (!read || got < size) {
        png_error(png, "it was cut short");
    }
}

using Texts = std::vector<std::pair<std::string, std::string>>;

Texts texts_of(const PictureInfo& info) {
    Texts texts = {{"Software", kProgramVersion}};
    for (const auto& [key, value] : info.details) {
        texts.emplace_back(std::string(kDetailPrefix) + key, value);
    }
    const std::string description = description_of(info);
    if (!description.empty()) {
        texts.emplace_back("Description", description);
    }
    if (!info.settings.empty()) {
        texts.emplace_back(std::string(kDetailPrefix) + "settings", info.settings);
    }
    return texts;
}

bool is_ascii(char character) { return static_cast<unsigned char>(character) < 0x80; }

std::vector<png_text> chunks_of(Texts& texts) {
    // The format's own limit; a control with a longer name has it in the description alone.
    static constexpr std::size_t kLongestKey = 79;
    std::erase_if(texts,
                  [](const Texts::value_type& text) { return text.first.size() > kLongestKey; });
    std::vector<png_text> chunks;
    chunks.reserve(texts.size());
    for (auto& [key, value] : texts) {
        png_text chunk = {};
        chunk.key = key.data();
        chunk.text = value.data();
        // The plain kind of text is Latin-1 by definition.
        if (std::all_of(value.begin(), value.end(), is_ascii)) {
            chunk.compression = PNG_TEXT_COMPRESSION_NONE;
            chunk.text_length = value.size();
        } else {
            chunk.compression = PNG_ITXT_COMPRESSION_NONE;
            chunk.itxt_length = value.size();
        }
        chunks.push_back(chunk);
    }
    return chunks;
}

void set_space(png_structp png, png_infop header, SampleSpace space) {
    if (space == SampleSpace::Srgb) {
        png_set_sRGB_gAMA_and_cHRM(png, header, PNG_sRGB_INTENT_ABSOLUTE);
    } else if (space == SampleSpace::Linear) {
        png_set_gAMA(png, header, 1.0);
    }
}

/// Between `setjmp` and the end no object with a destructor is made. False: the library jumped
/// back.
bool write_all(png_structp png, png_infop header, const SampleRows& rows,
               const std::vector<png_text>& chunks, std::byte* row) {
    if (setjmp(png_jmpbuf(png)) != 0) {
        return false;
    }
    const bool wide = rows.kind == SampleKind::Codes16;
    png_set_IHDR(png, header, static_cast<png_uint_32>(rows.width),
                 static_cast<png_uint_32>(rows.height), wide ? 16 : 8, PNG_COLOR_TYPE_RGB,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    set_space(png, header, rows.space);
    png_set_text(png, header, chunks.data(), static_cast<int>(chunks.size()));
    png_write_info(png, header);
    if (wide && std::endian::native == std::endian::little) {
        png_set_swap(png);
    }
    for (int y = 0; y < rows.height; ++y) {
        rows.read(y, row);
        png_write_row(png, reinterpret_cast<png_const_bytep>(row));
    }
    png_write_end(png, nullptr);
    return true;
}

/// The texts come before or behind the pixels. False: the library jumped back.
bool read_all(png_structp png, png_infop header, png_infop end, std::vector<png_byte>& row) {
    if (setjmp(png_jmpbuf(png)) != 0) {
        return false;
    }
    png_read_info(png, header);
    const int passes = png_set_interlace_handling(png);
    png_read_update_info(png, header);
    row.resize(png_get_rowbytes(png, header));
    const png_uint_32 height = png_get_image_height(png, header);
    for (int pass = 0; pass < passes; ++pass) {
        for (png_uint_32 y = 0; y < height; ++y) {
            png_read_row(png, row.data(), nullptr);
        }
    }
    png_read_end(png, end);
    return true;
}

/// The library takes the memory that a chunk claims before it looks whether the file is that long.
bool fit_chunks_into_the_file(const std::filesystem::path& path) {
    std::error_code error;
    const std::uintmax_t length = std::filesystem::file_size(path, error);
    std::ifstream file(path, std::ios::binary);
    constexpr std::streamoff kSignature = 8;
    constexpr std::uintmax_t kAround = 12;  // its length, its name and its checksum
    std::uintmax_t place = kSignature;
    while (!error && place + kAround <= length) {
        file.seekg(static_cast<std::streamoff>(place));
        std::uintmax_t size = 0;
        for (int digit = 0; digit < 4; ++digit) {
            size = size << 8U | static_cast<unsigned int>(file.get() & 0xFF);
        }
        place += kAround + size;
    }
    return !error && place == length;
}

void add_texts(png_structp png, png_infop header, PictureDetails& details) {
    png_textp texts = nullptr;
    const int count = png_get_text(png, header, &texts, nullptr);
    for (const png_text& text : std::span(texts, static_cast<std::size_t>(std::max(count, 0)))) {
        const std::size_t length =
            text.compression >= PNG_ITXT_COMPRESSION_NONE ? text.itxt_length : text.text_length;
        add_attribute(text.key, std::string_view(text.text, length), details);
    }
}

}  // namespace

void write_png(AtomicFile& file, const SampleRows& rows, const PictureInfo& info) {
    Trouble trouble;
    png_structp png =
        png_create_write_struct(PNG_LIBPNG_VER_STRING, &trouble, note_error, pass_over_warning);
    png_infop header = png != nullptr ? png_create_info_struct(png) : nullptr;
    const auto destroy = [&header](png_structp made) { png_destroy_write_struct(&made, &header); };
    const std::unique_ptr<png_struct, decltype(destroy)> owner(png, destroy);
    if (header == nullptr) {
        throw std::bad_alloc();
    }
    png_set_write_fn(png, &file, write_bytes, flush_nothing);
    Texts texts = texts_of(info);
    const std::vector<png_text> chunks = chunks_of(texts);
    std::vector<std::byte> row(rows.row_bytes());
    if (!write_all(png, header, rows, chunks, row.data())) {
        if (trouble.failure) {
            std::rethrow_exception(trouble.failure);
        }
        throw Failure("cannot write " + file.path().string() + ": " + trouble.text);
    }
}

PictureDetails read_png_details(const std::filesystem::path& path) {
    OSAPI::DiskFile file(path.c_str(), OSAPI::kRead);
    if (!fit_chunks_into_the_file(path)) {
        throw Failure("cannot read the picture " + path.string() + ": it was cut short");
    }
    Trouble trouble;
    png_structp png =
        png_create_read_struct(PNG_LIBPNG_VER_STRING, &trouble, note_error, pass_over_warning);
    png_infop header = png != nullptr ? png_create_info_struct(png) : nullptr;
    png_infop end = header != nullptr ? png_create_info_struct(png) : nullptr;
    const auto destroy = [&](png_structp made) { png_destroy_read_struct(&made, &header, &end); };
    const std::unique_ptr<png_struct, decltype(destroy)> owner(png, destroy);
    if (end == nullptr) {
        throw std::bad_alloc();
    }
    png_set_read_fn(png, &file, read_bytes);
    std::vector<png_byte> row;
    if (!read_all(png, header, end, row)) {
        if (trouble.failure) {
            std::rethrow_exception(trouble.failure);
        }
        throw Failure("cannot read the picture " + path.string() + ": " + trouble.text);
    }
    PictureDetails details;
    add_texts(png, header, details);
    add_texts(png, end, details);
    return details;
}

}  // namespace lumivar
