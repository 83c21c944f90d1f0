// The text of paths.
#include <osapi/path_text.h>
#include <strings.h>

#include <cstddef>
#include <cstring>

namespace OSAPI {

namespace {

const char* const kInProgress = ".inprogress";
// With three characters or fewer before the suffix, the suffix is taken for a real extension.
constexpr std::size_t kLongestExempt = 14;

String after_last(char character, const String& text, const char* otherwise) {
    const unsigned int index = text.findr(character);
    return index == String::kNotFound ? String(otherwise) : String(text.c_str() + index + 1);
}

}  // namespace

String basename(const char* path) { return after_last('/', path, path); }

String dirname(const char* path) {
    if (*path == '\0') {
        return {};
    }
    for (std::size_t index = std::strlen(path); index > 0; --index) {
        if (path[index] == '/') {
            return {path, static_cast<unsigned int>(index)};
        }
    }
    return *path == '/' ? "/" : ".";
}

String extension(const char* path) {
    const char* dot = std::strrchr(path, '.');
    if (dot != nullptr && strcasecmp(dot, kInProgress) == 0 && std::strlen(path) > kLongestExempt) {
        return after_last('.', String(path, static_cast<unsigned int>(dot - path)), "");
    }
    return after_last('.', path, "");
}

}  // namespace OSAPI
