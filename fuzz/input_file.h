// The made-up bytes as a file, for readers that open one.
#pragma once

#include <base/exceptions.h>
#include <osapi/files.h>
#include <syscalls.h>

#include <algorithm>
#include <cstddef>
#include <string>

#include "support/scratch.h"

/// A folder that lives as long as the program. Nothing in it is brought to the disk: waiting for
/// that would take most of the time.
inline const ScratchFolder& fuzz_folder() {
    static const ScratchFolder folder;
    OSAPI::calls<OSAPI::FileCalls>().fsync = [](int) { return 0; };
    return folder;
}

/// Writes `bytes` to a file of the folder and gives its path.
inline std::string input_file(const std::string& name, const std::string& bytes) {
    std::string path = fuzz_folder() / name;
    const OSAPI::DiskFile file(path.c_str(), OSAPI::kWrite);
    OSAPI::write(file.fd(), bytes.data(), bytes.size());
    return path;
}

namespace fuzz_detail {
inline std::size_t largest_piece = 0;
}

/// From here on a single read of a file gives `bytes` at most, as it may for a pipe. Readers must
/// not notice.
inline void read_in_pieces_of(std::size_t bytes) {
    static const auto whole = OSAPI::calls<OSAPI::FileCalls>().read;
    fuzz_detail::largest_piece = bytes;
    OSAPI::calls<OSAPI::FileCalls>().read = [](int fd, void* to, std::size_t count) {
        return whole(fd, to, std::min(count, fuzz_detail::largest_piece));
    };
}
