#include "fingerprint.h"

#include <osapi/files.h>
#include <osapi/open_mode.h>

#include <array>
#include <cstddef>
#include <cstdint>

// The library in this file's own code, where no symbol of it is exported.
#define XXH_INLINE_ALL
#include <xxhash.h>

#include "failure.h"

namespace lumivar {
namespace {

class Hash {
public:
    Hash() { XXH3_128bits_reset(state_.get()); }

    void add(const void* bytes, std::size_t size) {
        XXH3_128bits_update(state_.get(), bytes, size);
    }
    std::string text() const {
        XXH128_canonical_t canonical;
        XXH128_canonicalFromHash(&canonical, XXH3_128bits_digest(state_.get()));
        static constexpr char kDigits[] = "0123456789abcdef";
        std::string text;
        for (const unsigned char byte : canonical.digest) {
            text += kDigits[byte >> 4U];
            text += kDigits[byte & 0xFU];
        }
        return text;
    }

private:
    struct Free {
        void operator()(XXH3_state_t* state) const { XXH3_freeState(state); }
    };
    std::unique_ptr<XXH3_state_t, Free> state_{XXH3_createState()};
};

void add_size(Hash& hash, std::uint64_t size) {
    std::array<unsigned char, 8> bytes{};
    for (unsigned char& byte : bytes) {
        byte = static_cast<unsigned char>(size & 0xFFU);
        size >>= 8U;
    }
    hash.add(bytes.data(), bytes.size());
}

}  // namespace

struct Fingerprint::State {
    Hash hash;
};

Fingerprint::Fingerprint() : state_(std::make_unique<State>()) {}
Fingerprint::~Fingerprint() = default;

void Fingerprint::add(std::string_view name, std::string_view value) {
    // Sizes first, so that no two lists of parts run into the same bytes.
    for (const std::string_view part : {name, value}) {
        add_size(state_->hash, part.size());
        state_->hash.add(part.data(), part.size());
    }
}

std::string Fingerprint::text() const { return state_->hash.text(); }

std::string file_fingerprint(const std::filesystem::path& path) {
    constexpr std::size_t kPiece = std::size_t{1} << 18;
    Hash hash;
    try {
        OSAPI::DiskFile file(path.c_str(), OSAPI::kRead);
        std::string piece(kPiece, '\0');
        while (const sword size = file.read_short(piece.data(), piece.size())) {
            hash.add(piece.data(), static_cast<std::size_t>(size));
        }
    } catch (const StrXception& failure) {
        throw system_failure("cannot read " + path.string(), failure);
    }
    return hash.text();
}

}  // namespace lumivar
