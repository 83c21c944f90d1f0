// What something was made of, in a few characters that tell it from everything else.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace lumivar {

/// Gathers parts in a certain order. The same parts give the same text on every machine; XXH3 with
/// 128 bits, which is no protection against somebody who wants two things to look the same.
class Fingerprint {
public:
    Fingerprint();
    ~Fingerprint();
    Fingerprint(const Fingerprint&) = delete;
    Fingerprint& operator=(const Fingerprint&) = delete;

    /// The name tells apart parts that may be missing.
    void add(std::string_view name, std::string_view value);
    /// 32 hexadecimal digits.
    std::string text() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// The fingerprint of a file's bytes. Throws `Failure`.
std::string file_fingerprint(const std::filesystem::path& path);

}  // namespace lumivar
