// Catalogues of stars to a star database.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "import/account.h"
#include "import/import_options.h"
#include "import/row_converter.h"

namespace lumivar {

struct ImportSummary {
    Account rows;
    UnknownValues unknown;     ///< of the rows kept
    std::uint64_t merged = 0;  ///< kept rows that were a star of an earlier input
    std::uint64_t stars = 0;   ///< in the database: kept less merged
};

/// Told what goes on, for showing it.
class ImportWatcher {
public:
    ImportWatcher() = default;
    ImportWatcher(const ImportWatcher&) = delete;
    ImportWatcher& operator=(const ImportWatcher&) = delete;
    virtual ~ImportWatcher() = default;
    /// A file has been recognised; `text` is one line.
    virtual void recognised(const std::string& text) = 0;
    /// A row is at fault; `text` is one line that begins with its place.
    virtual void skipped(const std::string& text) = 0;
    /// Something looks odd, though it may be meant so; `text` is one line.
    virtual void remark(const std::string& text) = 0;
};

/// Reads the catalogues `inputs` ("-" is standard input) one after the other and writes the
/// database `output`, whole or not at all. The stars keep their order. Memory does not grow with
/// the inputs.
///
/// Throws `Failure`, naming file and line: an input cannot be read, is no table or has no columns
/// for stars, its data are damaged; a row is at fault and `options.strict` is set; there were rows
/// and none is a star. Throws `UsageError` when the output would replace an input.
ImportSummary import_catalogues(const std::vector<std::string>& inputs,
                                const std::filesystem::path& output, const ImportOptions& options,
                                ImportWatcher& watcher);

}  // namespace lumivar
