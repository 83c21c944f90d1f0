#include "frame_worker.h"

#include <base/exceptions.h>

#include <chrono>
#include <cstddef>
#include <exception>
#include <filesystem>
#include <new>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include "atomic_file.h"
#include "failure.h"
#include "frame_report.h"
#include "picture_arguments.h"
#include "picture_info.h"
#include "picture_reading.h"
#include "preview_film.h"
#include "run_hints.h"

namespace lumivar {
namespace {

using Clock = std::chrono::steady_clock;

double seconds_since(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// Of the exception that is being handled.
std::string error_text() {
    try {
        throw;
    } catch (const StrXception& error) {
        return error.message().c_str();
    } catch (const AssertXception& error) {
        return std::string("a defect of the program: ") + error.expression();
    } catch (const std::bad_alloc&) {
        return "there is not enough memory for this";
    } catch (const std::exception& error) {
        return error.what();
    }
}

FrameView view_of(const host::World& world) {
    return {world.row(0), world.row_bytes(), world.width(), world.height(), world.depth()};
}

/// A frame on its way to its picture.
struct Drawn {
    std::size_t item = 0;
    bool kept = false;  ///< its picture is there already, and this is for the film alone
    std::string path;
    host::Frame frame;
    PictureInfo info;
    FrameReport report;
};

/// Writes one picture at a time, in a thread of its own. What a signal has to remove is known to
/// the main thread alone, so the file is made and unmade there.
class PictureWriter {
public:
    PictureWriter(WorkerLink& link, const FrameWork& work) : link_(link), work_(work) {}
    ~PictureWriter() {
        if (thread_.joinable()) {
            thread_.join();
        }
    }
    PictureWriter(const PictureWriter&) = delete;
    PictureWriter& operator=(const PictureWriter&) = delete;

    void start(Drawn drawn) {
        drawn_.emplace(std::move(drawn));
        try {
            if (!drawn_->kept) {
                file_.emplace(drawn_->path);
            }
            if (!work_.film_folder.empty()) {
                film_file_.emplace(work_.film_folder / film_picture(drawn_->item));
            }
        } catch (...) {
            error_ = error_text();
            std::error_code error;
            // Something else of that name stands in the way of this picture alone.
            is_for_all_ = !std::filesystem::exists(drawn_->path, error) ||
                          std::filesystem::is_regular_file(drawn_->path, error);
            return;
        }
        try {
            thread_ = std::thread([this] { write(); });
        } catch (const std::system_error&) {
            write();  // a process that may have no more threads is slower and no worse
        }
    }

    /// Waits for the picture that is being written, if there is one, and reports it.
    void finish() {
        if (!drawn_) {
            return;
        }
        if (thread_.joinable()) {
            thread_.join();
        }
        file_.reset();
        film_file_.reset();
        const Drawn done = std::move(*drawn_);
        drawn_.reset();
        if (const auto error = std::exchange(error_, std::nullopt)) {
            if (std::exchange(is_for_all_, true)) {
                link_.failed_for_all(done.item, *error);
            } else {
                link_.failed(done.item, *error);
            }
        } else {
            link_.done(done.item, report_text(done.report));
        }
    }

private:
    void write() {
        try {
            const Clock::time_point start = Clock::now();
            const FrameView view = view_of(drawn_->frame.world);
            if (file_) {
                write_picture(*file_, drawn_->path, view, drawn_->info, work_.content);
            }
            if (film_file_) {
                write_picture(*film_file_, film_picture(drawn_->item), view, {},
                              work_.film_content);
            }
            work_.fingerprints.require_unchanged_catalogues();
            if (file_) {
                file_->publish();
            }
            if (film_file_) {
                film_file_->publish();
            }
            drawn_->report.write_seconds = seconds_since(start);
        } catch (...) {
            error_ = error_text();
        }
    }

    WorkerLink& link_;
    const FrameWork& work_;
    std::optional<Drawn> drawn_;
    std::optional<AtomicFile> file_;
    std::optional<AtomicFile> film_file_;
    std::optional<std::string> error_;
    bool is_for_all_ = true;  ///< the error would befall all pictures
    std::thread thread_;
};

/// Whether the picture of a shot is as good as the one that would be made.
bool is_to_be_kept(const FrameWork& work, const Shot& shot) {
    std::error_code error;
    if (work.existing == Existing::Replace || !std::filesystem::is_regular_file(shot.path, error)) {
        return false;
    }
    if (work.existing == Existing::Keep) {
        return true;
    }
    try {
        const auto details = read_picture_details(shot.path);
        const auto found = details.find(kFingerprintDetail);
        return found != details.end() && found->second == work.fingerprints.of(shot);
    } catch (const Failure&) {
        return false;  // a damaged picture is one to make anew
    }
}

Drawn draw(Player& player, const FrameWork& work, std::size_t item) {
    const Shot& shot = work.shots[item];
    const host::Scene& scene = work.scenes[shot.scene];
    const Clock::time_point start = Clock::now();
    Drawn drawn{item, false, shot.path, player.render(scene, shot.time, work.options), {}, {}};
    drawn.report.render_seconds = seconds_since(start);
    drawn.report.width = drawn.frame.world.width();
    drawn.report.height = drawn.frame.world.height();
    drawn.report.brightest = brightest_channel(drawn.frame.world);
    const std::optional<CatalogueUsed> catalogue = player.catalogue_used(scene, shot.time);
    if (catalogue) {
        drawn.report.catalogue = catalogue->name;
        drawn.report.stars = catalogue->stars;
    }
    drawn.info = picture_info(player.session(), scene, shot.time, catalogue);
    drawn.info.details.emplace_back("picture", content_text(work.content));
    drawn.info.details.emplace_back(kFingerprintDetail, work.fingerprints.of(shot));
    drawn.info.shot = shot_info(scene, shot.time, shot.frame);
    return drawn;
}

}  // namespace

void work_on_frames(WorkerLink& link, Player& player, const FrameWork& work) {
    player.forget();
    PictureWriter writer(link, work);
    while (true) {
        const WorkerLink::Next next = link.next();
        if (!next.task) {
            writer.finish();
            if (next.rest == WorkerLink::Rest::End) {
                player.close();
                return;
            }
            continue;
        }
        const std::size_t item = next.task->item;
        try {
            const bool kept = is_to_be_kept(work, work.shots[item]);
            if (kept && work.film_folder.empty()) {
                FrameReport report;
                report.kept = true;
                link.done(item, report_text(report));
                continue;
            }
            Drawn drawn = draw(player, work, item);
            drawn.kept = drawn.report.kept = kept;
            writer.finish();
            writer.start(std::move(drawn));
        } catch (...) {
            link.failed(item, error_text());
        }
        if (next.task->alone) {
            writer.finish();
        }
    }
}

}  // namespace lumivar
