#include "working_folder.h"

#include <fcntl.h>
#include <osapi/processes.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "failure.h"

namespace lumivar {
namespace fs = std::filesystem;
namespace {

constexpr std::string_view kPrefix = ".lumivar-work-";
constexpr const char* kLockName = "lock";

/// PREFIX, digits, "-", digits and nothing else: a name that only this program gives.
bool is_working_name(std::string_view name) {
    if (name.substr(0, kPrefix.size()) != kPrefix) {
        return false;
    }
    name.remove_prefix(kPrefix.size());
    const std::size_t dash = name.find('-');
    const auto digits = [](std::string_view text) {
        return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
    };
    return dash != std::string_view::npos && digits(name.substr(0, dash)) &&
           digits(name.substr(dash + 1));
}

bool same_file(int descriptor, const fs::path& path) {
    struct stat opened = {};
    struct stat named = {};
    return fstat(descriptor, &opened) == 0 && lstat(path.c_str(), &named) == 0 &&
           opened.st_ino == named.st_ino && opened.st_dev == named.st_dev;
}

int open_lock(const fs::path& folder) {
    return open((folder / kLockName).c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
}

bool remove_if_orphan(const fs::path& folder) {
    struct stat status = {};
    if (lstat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode) ||
        status.st_uid != geteuid()) {
        return false;
    }
    // A folder without a lock file was left by a run that ended between making the folder and
    // making the lock. This run makes the lock itself and takes it. Should the owner still be
    // alive, it finds that its lock file is gone or another one, and makes a new folder.
    const int lock = open_lock(folder);
    if (lock < 0) {
        return false;
    }
    bool removed = false;
    if (flock(lock, LOCK_EX | LOCK_NB) == 0 && same_file(lock, folder / kLockName)) {
        std::error_code error;
        fs::remove_all(folder, error);
        removed = !error;
    }
    close(lock);
    return removed;
}

/// Folders in which this process has removed orphans, and not the one that it is a copy of; used by
/// its main thread alone.
std::set<std::string>& looked_through() {
    static std::set<std::string> folders;
    static int process = 0;
    if (process != OSAPI::getpid()) {
        process = OSAPI::getpid();
        folders.clear();
    }
    return folders;
}

/// Of the folders that this process made; used by its main thread alone.
std::vector<int>& held_locks() {
    static std::vector<int> locks;
    return locks;
}

}  // namespace

void leave_working_folders_to_parent() {
    for (const int lock : held_locks()) {
        close(lock);
    }
    held_locks().clear();
}

int remove_orphans(const fs::path& parent) {
    int removed = 0;
    std::error_code error;
    for (fs::directory_iterator entry(parent, error), end; !error && entry != end;
         entry.increment(error)) {
        if (is_working_name(entry->path().filename().string()) && remove_if_orphan(entry->path())) {
            ++removed;
        }
    }
    return removed;
}

WorkingFolder::WorkingFolder(const fs::path& parent, std::string complaint)
    : complaint_(std::move(complaint)) {
    const fs::path place = fs::absolute(parent.empty() ? fs::path(".") : parent);
    // To look is to list the folder, which may have a hundred thousand pictures: once is enough,
    // as who starts other processes looks again when one has died.
    if (looked_through().insert(place.string()).second) {
        remove_orphans(place);
    }
    const std::string stem = std::string(kPrefix) + std::to_string(OSAPI::getpid()) + "-";
    for (unsigned int attempt = 0; !claim(place / (stem + std::to_string(attempt))); ++attempt) {
    }
}

bool WorkingFolder::claim(const fs::path& candidate) {
    entries_.emplace_back(candidate, RemoveOnSignal::Kind::Folder);
    if (mkdir(candidate.c_str(), 0700) != 0) {
        const int error = errno;
        entries_.clear();
        if (error == EEXIST) {
            return false;
        }
        throw system_failure(complaint_, error);
    }
    entries_.emplace_back(candidate / kLockName, RemoveOnSignal::Kind::File);
    lock_ = open_lock(candidate);
    // A file system without locks answers with an error: then no other run can lock it either, and
    // the folder is never taken for an orphan.
    if (lock_ >= 0 && (flock(lock_, LOCK_EX) != 0 || same_file(lock_, candidate / kLockName))) {
        path_ = candidate;
        held_locks().push_back(lock_);
        return true;
    }
    const int error = errno;
    const bool taken_away = lock_ >= 0 || error == ENOENT;
    if (lock_ >= 0) {
        close(lock_);
        lock_ = -1;
    }
    entries_.clear();
    if (taken_away) {
        return false;  // another run took the folder for an orphan while it had no lock
    }
    rmdir(candidate.c_str());
    throw system_failure(complaint_, error);
}

WorkingFolder::~WorkingFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
    std::erase(held_locks(), lock_);
    close(lock_);
}

fs::path WorkingFolder::file(const fs::path& relative) {
    fs::path path = path_ / relative;
    entries_.emplace_back(path, RemoveOnSignal::Kind::File);
    return path;
}

fs::path WorkingFolder::make_folder(const fs::path& relative) {
    fs::path path = path_ / relative;
    entries_.emplace_back(path, RemoveOnSignal::Kind::Folder);
    if (mkdir(path.c_str(), 0700) != 0) {
        throw system_failure(complaint_, errno);
    }
    return path;
}

}  // namespace lumivar
