// Shell patterns over POSIX.
#include <base/exceptions.h>
#include <glob.h>
#include <osapi/file_patterns.h>

#include "syscalls.h"

namespace OSAPI {

struct Glob::Matches {
    Matches() = default;
    Matches(const Matches&) = delete;
    Matches& operator=(const Matches&) = delete;
    ~Matches() { ::globfree(&result); }

    unsigned int index = 0;
    glob_t result = {};
    bool none = false;
};

Glob::Glob(const char* pattern) : matches_(new Matches) {
    const int code = calls<PathCalls>().glob(pattern, 0, nullptr, &matches_->result);
    if (code == GLOB_NOMATCH) {
        matches_->none = true;
    } else if (code != 0) {
        XTHROW("glob(%s): %d", pattern, code);
    }
}

Glob::~Glob() = default;

const char* Glob::next() {
    if (matches_->none) {
        return nullptr;
    }
    // The system's list ends in a null, where the index stays.
    const char* match = matches_->result.gl_pathv[matches_->index];
    if (match != nullptr) {
        ++matches_->index;
    }
    return match;
}

}  // namespace OSAPI
