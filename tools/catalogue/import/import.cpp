#include "import/import.h"

#include <osapi/files.h>
#include <unistd.h>

#include <cerrno>
#include <map>
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
/// Fewer may happen to lie in the first 24 degrees.
constexpr std::uint64_t kRowsForHoursHint = 20;
constexpr double kHoursInCircle = 24.0;
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

    void read(const std::string& input) {
        OpenedTable opened(input, options_, folder_of_output(), previous_);
        watcher_.recognised(opened.announcement());
        begin_layout(opened.layout(), input);
        converter_.forget_largest_ra();
        const std::uint64_t kept_before = summary_.rows.kept();
        read_rows(opened, input, number_of(opened));
        if (opened.layout().degrees_by_habit &&
            summary_.rows.kept() - kept_before >= kRowsForHoursHint &&
            converter_.largest_ra() < kHoursInCircle) {
            watcher_.remark(input +
                            ": no right ascension is above 24: if they are hours, say --units "
                            "hours");
        }
        bytes_before_ += opened.table().bytes_in_all();
    }

    ImportSummary finish() {
        if (summary_.rows.kept() == 0 && summary_.rows.read() > 0) {
            throw Failure(
                "none of " + std::to_string(summary_.rows.read()) +
                " rows is a star, nothing is written: " + summary_.rows.reasons("", "; "));
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
    /// Where a link leads, the output will stand.
    std::filesystem::path folder_of_output() const {
        std::error_code ignored;
        return std::filesystem::is_symlink(output_, ignored)
                   ? std::filesystem::weakly_canonical(output_, ignored).parent_path()
                   : output_.parent_path();
    }

    /// Of the catalogue, for finding duplicates: the files of a published one are its parts, and so
    /// is a file without a line of names.
    unsigned number_of(const OpenedTable& opened) {
        const std::string& title = opened.layout().title;
        const bool is_part = opened.continues_previous() ||
                             (opened.layout().is_published && numbers_.count(title) != 0);
        if (!is_part) {
            numbers_[title] = catalogues_++;
        }
        return numbers_[title];
    }

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
        const RowFault kOtherTable = {FaultKind::OtherTable, ""};
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
                    skip(table, are_stars ? table.fault() : kOtherTable);
                    break;
                case Table::Step::Row:
                    if (!are_stars) {
                        skip(table, kOtherTable);
                    } else if (converter_.convert(table, star, fault)) {
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
    std::map<std::string, unsigned> numbers_;  ///< by the title of the catalogue
    unsigned catalogues_ = 0;
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
    for (const std::string& input : inputs) {
        import.read(input);
    }
    return import.finish();
}

}  // namespace lumivar
