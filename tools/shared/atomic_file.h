// A file that appears whole under its name, or not at all.
#pragma once

#include <osapi/atomic_file_write.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <vector>

#include "working_folder.h"

namespace lumivar {

/// Written in a working folder beside its final place, flushed to the disk and moved there by
/// `publish`. Until then an existing file of that name stays as it is; without `publish` nothing is
/// left. A symbolic link is followed: the file it points at is replaced.
///
/// Messages name the final path.
class AtomicFile {
public:
    /// Throws `Failure` when the path cannot become a file: its folder is missing or closed to us,
    /// or something that is no regular file stands there.
    explicit AtomicFile(const std::filesystem::path& path);
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    /// Appends bytes. Throws `Failure` when the disk does not take them.
    void write(std::span<const std::byte> bytes);
    /// Moves the place of the next `write`, in bytes from the file's start: for formats that tell
    /// at their beginning what stands further on. Throws `Failure`.
    void seek(std::uint64_t position);
    /// Puts the file in its place. Throws `Failure`; call it once, last.
    void publish();
    /// As the user wrote it, for messages.
    const std::filesystem::path& path() const { return shown_; }

private:
    /// Lets no failure out: what cannot be removed goes with the working folder.
    struct Discard {
        void operator()(OSAPI::AtomicFileWrite* file) const;
    };

    void flush();
    void write_through(std::span<const std::byte> bytes);

    std::filesystem::path shown_;  ///< as the user wrote it
    std::filesystem::path target_;
    WorkingFolder folder_;
    std::unique_ptr<OSAPI::AtomicFileWrite, Discard> file_;
    std::vector<std::byte> buffer_;
};

/// Throws the `Failure` that an `AtomicFile` would, for what can be told before there is anything
/// to write.
void check_output_path(const std::filesystem::path& path);

}  // namespace lumivar
