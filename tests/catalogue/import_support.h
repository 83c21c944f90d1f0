// Imports for the tests: the stars that they make and what they say.
#pragma once

#include <string>
#include <vector>

#include "database/catalogue_star.h"
#include "import/import.h"

/// Keeps what it is told.
class KeepingWatcher : public lumivar::ImportWatcher {
public:
    void recognised(const std::string& text) override { files.push_back(text); }
    void skipped(const std::string& text) override { skips.push_back(text); }
    void remark(const std::string& text) override { remarks.push_back(text); }

    std::vector<std::string> files;
    std::vector<std::string> skips;
    std::vector<std::string> remarks;
};

struct Imported {
    lumivar::ImportSummary summary;
    std::vector<lumivar::CatalogueStar> stars;
    std::vector<std::string> files;  ///< what each file was taken for
    std::vector<std::string> skips;  ///< the rows at fault that were shown
    std::vector<std::string> remarks;
};

/// The stars of files. Throws as the import does.
Imported import_files(const std::vector<std::string>& inputs,
                      const lumivar::ImportOptions& options = {});
/// The stars of a text, under the name "t.csv" in a folder that is shown as "".
Imported import_text(const std::string& text, const lumivar::ImportOptions& options = {});
/// The message that importing the text ends with, its folder left out.
std::string import_text_failure(const std::string& text,
                                const lumivar::ImportOptions& options = {});
