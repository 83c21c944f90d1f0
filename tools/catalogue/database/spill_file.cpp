#include "database/spill_file.h"

#include <utility>

#include "failure.h"

namespace lumivar {

SpillFile::SpillFile(const std::filesystem::path& path, std::string complaint)
    : complaint_(std::move(complaint)) {
    try {
        file_.init(OSAPI::open(path.c_str(), OSAPI::kRead | OSAPI::kWrite));
        OSAPI::rm(path.c_str());
    } catch (const StrXception& failure) {
        throw system_failure(complaint_, failure);
    }
}

void SpillFile::append(std::span<const std::byte> bytes) {
    try {
        OSAPI::write(file_.fd(), reinterpret_cast<const char*>(bytes.data()), bytes.size());
    } catch (const StrXception& failure) {
        throw system_failure(complaint_, failure);
    }
    bytes_ += bytes.size();
}

void SpillFile::read(std::uint64_t offset, std::span<std::byte> bytes) {
    try {
        OSAPI::pread(file_.fd(), reinterpret_cast<char*>(bytes.data()), bytes.size(), offset);
    } catch (const StrXception& failure) {
        throw system_failure(complaint_, failure);
    }
}

}  // namespace lumivar
