#include <AE/messages.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>

namespace {

struct TableEntry {
    A_u_long index;
    A_char text[256];
};

constexpr TableEntry kTable[] = {
    {kStringNone, ""},
    {kStringName, "Lumivar for After Effects"},
    {kStringNotice, "Lumivar, 2026"},
    {kStringAllDependencies, "All Dependencies requested."},
    {kStringMissingDependencies, "Missing Dependencies requested."},
};

}  // namespace

const char* table_string(TableString index) {
    const TableEntry* entry = std::find_if(
        std::begin(kTable), std::end(kTable),
        [index](const TableEntry& candidate) { return candidate.index == A_u_long{index}; });
    return entry->text;
}

void set_return_msg(PF_OutData* out_data, const String& text) {
    const std::size_t room = sizeof out_data->return_msg - 1;
    const std::size_t length = std::min<std::size_t>(text.len(), room);
    std::memcpy(out_data->return_msg, text.c_str(), length);
    out_data->return_msg[length] = '\0';
}
