#include <AE/messages.h>
#include <osapi/system_text.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <utility>

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

void set_return_msg(PF_OutData* out_data, String text) {
    const String shown = OSAPI::system_text(std::move(text));
    const std::size_t room = sizeof out_data->return_msg - 1;
    const std::size_t length = std::min<std::size_t>(shown.len(), room);
    std::memcpy(out_data->return_msg, shown.c_str(), length);
    out_data->return_msg[length] = '\0';
}
