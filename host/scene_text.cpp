#include <host/scene.h>
#include <host/scene_text.h>
#include <osapi/files.h>
#include <osapi/streams.h>
#include <osapi/whole_file.h>
#include <unistd.h>

#include <algorithm>
#include <optional>

#include "json_node.h"

namespace host {

namespace {

// Reading a single byte moves the rest of the buffer, so a small buffer is several times faster
// here than one of a page.
constexpr int kStreamBuffer = 256;

const std::string kStandardInput = "-";

bool is_lost_in_lines(char byte) { return byte == '\0' || byte == '\xFF'; }

/// A source that ends before the first byte that `readline` would drop silently, or after
/// `longest` bytes.
class TextInput final : public Input {
public:
    TextInput(Input& source, s64 longest) : source_(source), longest_(longest) {}

    /// The byte at `curpos()` that ended the text, if one did.
    std::optional<char> refused() const { return refused_; }

    s64 curpos() const override { return position_; }
    int read(char* dest, int count) override {
        if (refused_) {
            return 0;
        }
        const s64 wanted = std::min<s64>(count, longest_ - position_);
        const int got = source_.read(dest, static_cast<int>(wanted));
        const char* const end = std::find_if(dest, dest + got, is_lost_in_lines);
        if (end != dest + got) {
            refused_ = *end;
        }
        position_ += end - dest;
        return static_cast<int>(end - dest);
    }
    s64 seek_from_start(s64 position) override {
        position_ = source_.seek_from_start(position);
        refused_.reset();
        return position_;
    }
    s64 seek_from_curpos(s64 offset) override { return seek_from_start(position_ + offset); }

private:
    Input& source_;
    s64 longest_;
    s64 position_ = 0;
    std::optional<char> refused_;
};

/// The scene's file, or standard input, which is the program's and stays open.
class SceneFile : public OSAPI::RWFileDescriptor {
public:
    explicit SceneFile(const std::string& path)
        : RWFileDescriptor(path == kStandardInput ? STDIN_FILENO
                                                  : OSAPI::open(path.c_str(), OSAPI::kRead)) {}
    SceneFile(const SceneFile&) = delete;
    SceneFile& operator=(const SceneFile&) = delete;
    ~SceneFile() noexcept(false) {
        if (fd() == STDIN_FILENO) {
            release();
        }
    }
};

}  // namespace

std::string name_of_scene(const std::string& path) {
    return path == kStandardInput ? "standard input" : path;
}

std::string read_scene_text(const std::string& path, int most_mebibytes) {
    const s64 longest = s64{most_mebibytes} << 20U;
    const std::string name = name_of_scene(path);
    try {
        SceneFile file(path);
        // Pipes give fewer bytes than they are asked for; this reads on.
        OSAPI::DescriptorInput bytes(file);
        TextInput source(bytes, longest + 1);
        BufferedInput input(source, kStreamBuffer);
        std::string text;
        for (String line = input.readline(); *line.c_str() != '\0'; line = input.readline()) {
            text += line.c_str();
        }
        if (const auto byte = source.refused()) {
            throw SceneError(name + ": " + line_and_column(text, text.size()) +
                             ": expected text, found the byte " +
                             (*byte == '\0' ? "0x00" : "0xFF") + "; save the scene as UTF-8 text");
        }
        if (static_cast<s64>(text.size()) > longest) {
            throw SceneError(name + ": expected a scene, found a file of more than " +
                             std::to_string(most_mebibytes) + " MiB");
        }
        return text;
    } catch (const StrXception& failure) {
        throw SceneError(OSAPI::cannot_read(name, failure));
    }
}

}  // namespace host
