#include "database/merge.h"

#include <algorithm>
#include <deque>

#include "database/database_reader.h"
#include "database/database_writer.h"
#include "database/duplicates.h"
#include "database/record_walk.h"

namespace lumivar {
namespace {

/// Passes stars on and shows how many.
class ShownStars : public StarSink {
public:
    ShownStars(StarSink& next, std::uint64_t total) : next_(next), progress_(total, "stars") {}
    void add(const CatalogueStar& star, unsigned input) override {
        constexpr std::uint64_t kStarsBetweenShows = 4096;
        next_.add(star, input);
        if (++stars_ % kStarsBetweenShows == 0) {
            progress_.update(stars_, "written");
        }
    }

private:
    StarSink& next_;
    Progress progress_;
    std::uint64_t stars_ = 0;
};

}  // namespace

MergeSummary merge_databases(const std::vector<std::filesystem::path>& inputs,
                             const std::filesystem::path& output,
                             std::optional<double> arcseconds) {
    MergeSummary summary;
    std::deque<DatabaseReader> readers;
    std::uint64_t all = 0;
    for (const std::filesystem::path& input : inputs) {
        readers.emplace_back(input);
        all += readers.back().stars();
        summary.version = std::max(summary.version, readers.back().version());
    }
    DatabaseWriter writer(output, summary.version);
    std::optional<ShownStars> shown;
    std::optional<DuplicateMerger> merger;
    if (arcseconds) {
        merger.emplace(*arcseconds, shown.emplace(writer, all), output);
    }
    {
        Progress progress(all, "stars");
        for (unsigned input = 0; input < readers.size(); ++input) {
            DatabaseReader& reader = readers[input];
            const bool drop_distance = reader.version() < summary.version;
            for_each_record(reader, progress, summary.read, [&](const star& record) {
                if (!merger && !drop_distance) {
                    writer.add_record(record);
                    return;
                }
                CatalogueStar star = decode_star(record);
                if (drop_distance) {
                    star.distance = -1.0;
                }
                StarSink& sink = merger ? static_cast<StarSink&>(*merger) : writer;
                sink.add(star, input);
            });
            summary.read += reader.stars();
        }
    }
    if (merger) {
        summary.merged = merger->finish();
    }
    summary.written = writer.stars();
    writer.publish();
    return summary;
}

}  // namespace lumivar
