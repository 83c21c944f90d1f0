#include "atomic_file.h"

#include <osapi/files.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "failure.h"

namespace lumivar {
namespace fs = std::filesystem;
namespace {

constexpr std::size_t kBufferBytes = std::size_t{1} << 18;

fs::path resolve_target(const fs::path& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (fs::is_directory(status)) {
        throw Failure("cannot write " + path.string() +
                      ": it is a folder, give the name of a file");
    }
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        // The rename would put a file in the place of a device or pipe.
        throw Failure("cannot write " + path.string() + ": it is not a regular file");
    }
    if (path.filename().empty()) {
        throw Failure("cannot write \"" + path.string() + "\": it names no file");
    }
    fs::path target = path;
    if (fs::is_symlink(fs::symlink_status(path, error))) {
        target = fs::weakly_canonical(path, error);
        if (error) {
            throw Failure("cannot write " + path.string() + ": " + error.message());
        }
    }
    const fs::path parent = target.parent_path().empty() ? fs::path(".") : target.parent_path();
    if (!fs::is_directory(parent, error)) {
        throw Failure("cannot write " + path.string() + ": there is no folder " + parent.string());
    }
    return target;
}

void sync_folder(const fs::path& folder) {
    // Best effort: the file is complete by now, and some file systems cannot sync a folder.
    try {
        const OSAPI::DiskFile opened(folder.c_str(), OSAPI::kRead);
        OSAPI::sync(opened.fd());
    } catch (const StrXception&) {
    }
}

}  // namespace

void check_output_path(const fs::path& path) {
    const fs::path parent = resolve_target(path).parent_path();
    if (access(parent.empty() ? "." : parent.c_str(), W_OK | X_OK) != 0) {
        throw system_failure("cannot write " + path.string(), errno);
    }
}

AtomicFile::AtomicFile(const fs::path& path)
    : shown_(path),
      target_(resolve_target(path)),
      folder_(target_.parent_path(), "cannot write " + path.string()) {
    buffer_.reserve(kBufferBytes);
    const fs::path temporary = folder_.file("content");
    try {
        file_.reset(new OSAPI::AtomicFileWrite(target_.c_str(), temporary.c_str(),
                                               OSAPI::kWrite | OSAPI::kExclusive));
    } catch (const StrXception& failure) {
        throw system_failure("cannot write " + shown_.string(), failure);
    }
}

void AtomicFile::Discard::operator()(OSAPI::AtomicFileWrite* file) const {
    try {
        delete file;
    } catch (const StrXception&) {
    }
}

void AtomicFile::write(std::span<const std::byte> bytes) {
    if (buffer_.size() + bytes.size() > kBufferBytes) {
        flush();
    }
    if (bytes.size() >= kBufferBytes) {
        write_through(bytes);  // copying a whole buffer would gain nothing
    } else {
        buffer_.insert(buffer_.end(), bytes.begin(), bytes.end());
    }
}

void AtomicFile::flush() {
    write_through(buffer_);
    buffer_.clear();
}

void AtomicFile::write_through(std::span<const std::byte> bytes) {
    try {
        OSAPI::write(file_->fd(), reinterpret_cast<const char*>(bytes.data()), bytes.size());
    } catch (const StrXception& failure) {
        throw system_failure("cannot write " + shown_.string(), failure);
    }
}

void AtomicFile::seek(std::uint64_t position) {
    flush();
    try {
        OSAPI::seek_from_start(file_->fd(), static_cast<s64>(position));
    } catch (const StrXception& failure) {
        throw system_failure("cannot write " + shown_.string(), failure);
    }
}

void AtomicFile::publish() {
    flush();
    try {
        file_->complete();
    } catch (const StrXception& failure) {
        throw system_failure("cannot write " + shown_.string(), failure);
    }
    sync_folder(target_.parent_path().empty() ? fs::path(".") : target_.parent_path());
}

}  // namespace lumivar
