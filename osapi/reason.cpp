#include <osapi/reason.h>

#include <cstddef>
#include <string_view>

namespace OSAPI {

String reason(const StrXception& failure) {
    std::string_view text = failure.message().c_str();
    // The last of each, since the path in the message may hold any of them.
    text = text.substr(0, text.rfind(" in <"));
    const std::size_t path_end = text.find_last_of("\")");
    const std::string_view separator = ": ";
    const std::size_t named =
        text.find(separator, path_end == std::string_view::npos ? 0 : path_end);
    if (named != std::string_view::npos) {
        text.remove_prefix(named + separator.size());
    }
    return {text.data(), static_cast<unsigned int>(text.size())};
}

}  // namespace OSAPI
