// Small glTF files, written for the tests.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

/// A buffer with its views and accessors, one of each for each list of numbers.
class GltfWriter {
public:
    /// Floats; the index of their accessor.
    std::size_t add(const std::string& type, const std::vector<double>& numbers) {
        const std::size_t start = bytes_.size();
        for (const double number : numbers) {
            append_little_endian(std::bit_cast<std::uint32_t>(static_cast<float>(number)), 4);
        }
        return describe(type, numbers.size(), start, 5126, "");
    }
    /// Normalised 16-bit integers.
    std::size_t add_shorts(const std::string& type, const std::vector<int>& numbers) {
        const std::size_t start = bytes_.size();
        for (const int number : numbers) {
            append_little_endian(static_cast<std::uint32_t>(number), 2);
        }
        return describe(type, numbers.size(), start, 5122, ", \"normalized\": true");
    }

    const std::string& bytes() const { return bytes_; }

    /// The document: `members` are put first; the buffer's bytes are in it, or `uri` names them, or
    /// with `uri` "-" nothing does.
    std::string json(const std::string& members, const std::string& uri = "") const {
        const std::string source =
            uri == "-"
                ? ""
                : ", \"uri\": \"" +
                      (uri.empty() ? "data:application/octet-stream;base64," + base64() : uri) +
                      "\"";
        return "{\"asset\": {\"version\": \"2.0\"}, " + members + ", \"accessors\": [" +
               accessors_ + "], \"bufferViews\": [" + views_ +
               "], \"buffers\": [{\"byteLength\": " + std::to_string(bytes_.size()) + source +
               "}]}";
    }
    /// The same in one binary file.
    std::string binary(const std::string& members) const {
        std::string text = json(members, "-");
        text.append((4 - text.size() % 4) % 4, ' ');
        std::string rest = bytes_;
        rest.append((4 - rest.size() % 4) % 4, '\0');
        GltfWriter file;
        file.bytes_ = "glTF";
        file.append_little_endian(2, 4);
        file.append_little_endian(static_cast<std::uint32_t>(28 + text.size() + rest.size()), 4);
        file.append_little_endian(static_cast<std::uint32_t>(text.size()), 4);
        file.bytes_ += "JSON" + text;
        file.append_little_endian(static_cast<std::uint32_t>(rest.size()), 4);
        file.bytes_ += std::string("BIN\0", 4) + rest;
        return file.bytes_;
    }

private:
    void append_little_endian(std::uint32_t number, unsigned size) {
        for (unsigned i = 0; i < size; ++i) {
            bytes_.push_back(static_cast<char>(number >> 8 * i & 0xFFU));
        }
    }

    std::size_t describe(const std::string& type, std::size_t numbers, std::size_t start,
                         int component, const std::string& more) {
        const std::size_t of_an_element = type == "SCALAR" ? 1 : type == "VEC3" ? 3 : 4;
        views_ += (count_ == 0 ? "" : ", ") +
                  ("{\"buffer\": 0, \"byteOffset\": " + std::to_string(start)) +
                  ", \"byteLength\": " + std::to_string(bytes_.size() - start) + "}";
        accessors_ += (count_ == 0 ? "" : ", ") + ("{\"bufferView\": " + std::to_string(count_)) +
                      ", \"componentType\": " + std::to_string(component) +
                      ", \"count\": " + std::to_string(numbers / of_an_element) + ", \"type\": \"" +
                      type + "\"" + more + "}";
        return count_++;
    }

    std::string base64() const {
        const std::string letters =
            "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        std::string text;
        for (std::size_t i = 0; i < bytes_.size(); i += 3) {
            unsigned group = 0;
            for (std::size_t b = 0; b < 3; ++b) {
                group = group << 8U |
                        (i + b < bytes_.size() ? static_cast<unsigned char>(bytes_[i + b]) : 0U);
            }
            for (std::size_t b = 0; b < 4; ++b) {
                text.push_back(i + b > bytes_.size() ? '=' : letters[group >> (18 - 6 * b) & 63U]);
            }
        }
        return text;
    }

    std::string bytes_;
    std::string views_;
    std::string accessors_;
    std::size_t count_ = 0;
};
