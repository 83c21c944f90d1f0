#include "import/import.h"

#include <osapi/files.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <optional>
#include <system_error>

#include "database/database_writer.h"
#include "database/duplicates.h"
#include "failure.h"
#include "import/table_opening.h"
#include "progress.h"

namespace lumivar {
namespace {

constexpr std::uint64_t kRowsBetweenProgress = 4096;
constexpr std::uint64_t kBytesInMegabyte = 1000000;
/// Rows that are shown one by one; the summary counts the others.
constexpr std::uint64_t kShownFaults = 5;

bool is_standard_input(const std::string& input) { return input == "-"; }

/// What can be told before hours of work.
void check_inputs(const std::vector<std::string>& inputs, const std::filesystem::path& output) {
    int standard_inputs = 0;
    for (const std::string& input : inputs) {
        std::error_code ignored;
        if (is_standard_input(input)) {
            if (++standard_inputs > 1) {
                throw UsageError("standard input, -, can be read only once");
            }
        } else if (std::filesystem::equivalent(input, output, ignored)) {
            throw UsageError("the output would replace its own input " + input);
        } else if (access(input.c_str(), R_OK) != 0) {
            throw system_failure("cannot read " + input, errno);
        }
    }
}

/// Bytes of all inputs, 0 when those of one are not known.
std::uint64_t bytes_in_all(const std::vector<std::string>& inputs) {
    std::uint64_t sum = 0;
    for (const std::string& input : inputs) {
        std::error_code error;
        const std::uintmax_t size =
            is_standard_input(input) ? 0 : std::filesystem::file_size(input, error);
        if (error || size == 0) {
            return 0;
        }
        sum += size;
    }
    return sum;
}

class Import {
public:
    Import(const std::filesystem::path& output, const ImportOptions& options,
           ImportWatcher& watcher, std::uint64_t bytes)
        : output_(output),
          options_(options),
          watcher_(watcher),
          converter_(options),
          progress_(bytes / kBytesInMegabyte, "MB") {}

    void read(const std::string& input, unsigned number) {
        OpenedTable opened(input, options_, output_.parent_path(), previous_);
        watcher_.recognised(opened.announcement());
        begin_layout(opened.layout(), input);
        read_rows(opened, input, number);
        bytes_before_ += opened.table().bytes_in_all();
    }

    ImportSummary finish() {
        if (summary_.rows.kept() == 0 && summary_.rows.read() > 0) {
            throw Failure("none of " + std::to_string(summary_.rows.read()) +
                          " rows is a star; nothing is written:\n" + summary_.rows.reasons());
        }
        if (merger_) {
            summary_.merged = merger_->finish();
        }
        summary_.unknown = converter_.unknown();
        summary_.stars = writer_->stars();
        writer_->publish();
        return summary_;
    }

private:
    void begin_layout(const Layout& layout, const std::string& input) {
        converter_.use(layout);
        if (!writer_) {
            without_depth_ = layout.without_depth;
            writer_.emplace(output_, without_depth_ ? 1 : 2);
            sink_ = &*writer_;
            if (options_.dedupe) {
                merger_.emplace(*options_.dedupe, *writer_, output_);
                sink_ = &*merger_;
            }
        } else if (layout.without_depth != without_depth_) {
            throw Failure(input +
                          ": cannot be joined with the inputs before it: of one the distances "
                          "are used, of the other not");
        }
    }

    void read_rows(OpenedTable& opened, const std::string& input, unsigned number) {
        Table& table = opened.table();
        CatalogueStar star;
        RowFault fault;
        bool are_stars = true;
        for (;;) {
            switch (table.next()) {
                case Table::Step::End:
                    return;
                case Table::Step::NewColumns:
                    are_stars = opened.next_columns();
                    watcher_.recognised(
                        are_stars ? opened.announcement()
                                  : table.place() +
                                        ": a table without places and magnitudes follows; "
                                        "its rows are passed over");
                    if (are_stars) {
                        begin_layout(opened.layout(), input);
                    }
                    break;
                case Table::Step::Faulty:
                    if (are_stars) {
                        skip(table, table.fault());
                    }
                    break;
                case Table::Step::Row:
                    if (!are_stars) {
                        break;
                    }
                    if (converter_.convert(table, star, fault)) {
                        sink_->add(star, number);
                        summary_.rows.keep();
                    } else {
                        skip(table, fault);
                    }
                    break;
            }
            if (++rows_since_progress_ == kRowsBetweenProgress) {
                rows_since_progress_ = 0;
                progress_.update((bytes_before_ + table.bytes_read()) / kBytesInMegabyte);
            }
        }
    }

    void skip(const Table& table, const RowFault& fault) {
        const std::string place = table.place();
        if (!is_expected(fault.kind)) {
            std::string text = place + ": ";
            text += fault.detail.empty() ? fault_text(fault.kind) : fault.detail;
            if (options_.strict) {
                throw Failure(text);
            }
            if (summary_.rows.faulty() < kShownFaults) {
                watcher_.skipped(text);
            }
        }
        summary_.rows.skip(fault.kind, place);
    }

    std::filesystem::path output_;
    const ImportOptions& options_;
    ImportWatcher& watcher_;
    RowConverter converter_;
    Progress progress_;
    std::optional<PreviousText> previous_;
    std::optional<DatabaseWriter> writer_;
    std::optional<DuplicateMerger> merger_;
    StarSink* sink_ = nullptr;
    bool without_depth_ = false;
    std::uint64_t bytes_before_ = 0;
    std::uint64_t rows_since_progress_ = 0;
    ImportSummary summary_;
};

}  // namespace

ImportSummary import_catalogues(const std::vector<std::string>& inputs,
                                const std::filesystem::path& output, const ImportOptions& options,
                                ImportWatcher& watcher) {
    check_inputs(inputs, output);
    check_output_path(output);
    Import import(output, options, watcher, bytes_in_all(inputs));
    unsigned number = 0;
    for (const std::string& input : inputs) {
        import.read(input, number++);
    }
    return import.finish();
}

}  // namespace lumivar
