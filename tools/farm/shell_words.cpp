#include "shell_words.h"

#include "failure.h"

namespace lumivar {

std::string quoted(const std::string& text) {
    std::string word = "'";
    for (const char character : text) {
        if (character == '\n' || character == '\0') {
            throw UsageError("a name or option for the farm has a line feed in it: \"" + text +
                             "\"");
        }
        word += character == '\'' ? std::string("'\\''") : std::string(1, character);
    }
    return word + "'";
}

std::string quoted_words(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text.append(text.empty() ? "" : " ").append(quoted(word));
    }
    return text;
}

}  // namespace lumivar
