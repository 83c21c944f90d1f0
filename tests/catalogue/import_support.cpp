#include "catalogue/import_support.h"

#include <gtest/gtest.h>

#include <span>

#include "database/database_reader.h"
#include "failure_of.h"
#include "support/scratch.h"

namespace {

std::string without(std::string text, const std::string& part) {
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part)) {
        text.erase(at, part.size());
    }
    return text;
}

}  // namespace

Imported import_files(const std::vector<std::string>& inputs,
                      const lumivar::ImportOptions& options) {
    const ScratchFolder folder;
    KeepingWatcher watcher;
    Imported imported;
    imported.summary = lumivar::import_catalogues(inputs, folder / "t.stars", options, watcher);
    imported.files = watcher.files;
    imported.skips = watcher.skips;
    imported.remarks = watcher.remarks;
    lumivar::DatabaseReader reader(folder / "t.stars");
    for (std::span<const star> block = reader.next_block(); !block.empty();
         block = reader.next_block()) {
        for (const star& record : block) {
            imported.stars.push_back(lumivar::decode_star(record));
        }
    }
    EXPECT_EQ(imported.stars.size(), imported.summary.stars);
    return imported;
}

Imported import_text(const std::string& text, const lumivar::ImportOptions& options) {
    const ScratchFolder folder;
    write_file(folder / "t.csv", text);
    Imported imported = import_files({folder / "t.csv"}, options);
    for (std::vector<std::string>* lines : {&imported.files, &imported.skips}) {
        for (std::string& line : *lines) {
            line = without(line, folder.path() + "/");
        }
    }
    return imported;
}

std::string import_text_failure(const std::string& text, const lumivar::ImportOptions& options) {
    const ScratchFolder folder;
    write_file(folder / "t.csv", text);
    return without(failure_of([&] { import_files({folder / "t.csv"}, options); }),
                   folder.path() + "/");
}
