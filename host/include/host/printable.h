// Texts that a plug-in brings along, made fit for a terminal.
#pragma once

#include <string>
#include <string_view>

namespace host {

/// `text` as UTF-8 that moves no cursor and clears no screen: what is a control character, turns
/// the direction of writing or is no UTF-8 stands as an escape, each byte as "\x1B", line feed,
/// carriage return and tab as "\n", "\r" and "\t". Everything else stays as it is, a backslash too:
/// this is for reading, there is no way back. Cleaning twice changes nothing more.
std::string printable(std::string_view text);

}  // namespace host
