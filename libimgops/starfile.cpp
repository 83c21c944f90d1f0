#include <libimgops/starfile.h>

#include <cstddef>

MMAPStarFile::MMAPStarFile(const char* path) : map(path, OSAPI::kRead) {
    MMAPStarFile::reset();
    n = static_cast<u32>(map.size() / sizeof(star));
}

const star* MMAPStarFile::next() {
    // Mappings start on a page, so every record is aligned for its numbers.
    const void* record = cur;
    cur += sizeof(star);
    return static_cast<const star*>(record);
}

const star* MMAPStarFile::next_in_row(u32& count) {
    const unsigned char* first = cur;
    cur += std::size_t{count} * sizeof(star);
    return reinterpret_cast<const star*>(first);
}

void MMAPStarFile::reset() {
    const void* start = map.addr();
    cur = static_cast<const unsigned char*>(start);
}

StarInput* op_stars_file_input(const char* path) { return new MMAPStarFile(path); }
