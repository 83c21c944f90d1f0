// Which files of a folder are star databases, by their names.
#pragma once

#include <cstring>

/// Whether the plug-in lists a file of this name (the name alone, without folders): ".stars" may
/// stand anywhere in it. Users park databases as a.stars.bak and expect them in the list.
inline bool is_star_database_name(const char* name) {
    return std::strstr(name, ".stars") != nullptr;
}
