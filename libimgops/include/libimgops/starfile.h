// The star catalogue in a file, mapped into memory: no copies, no parsing ahead of use.
#pragma once

#include <libimgops/star_input.h>
#include <osapi/mappings.h>

/// The catalogue in a file.
class MMAPStarFile : public StarInput {
public:
    /// Maps the whole file. Throws the `StrXception` of `OSAPI::FileMapping` when it cannot be
    /// opened or mapped; an empty file cannot.
    explicit MMAPStarFile(const char* path);

    const star* next() override;
    void reset() override;
    /// All that are wanted: not checked against the end either.
    const star* next_in_row(u32& count) override;

private:
    const unsigned char* cur = nullptr;
    OSAPI::FileMapping map;
};

/// Opens the catalogue at `path`. The caller owns the result. Throws as `MMAPStarFile` does.
StarInput* op_stars_file_input(const char* path);
