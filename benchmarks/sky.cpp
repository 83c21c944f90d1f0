#include "sky.h"

#include <fcntl.h>
#include <libimgops/byte_order.h>
#include <libimgops/starfile.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <random>
#include <stdexcept>

namespace bench {

namespace {

constexpr unsigned kSeed = 20261121;
constexpr double kDegrees = 57.29577951308232;
/// The default camera's focal length, in halves of the frame's height.
constexpr double kFocal = 3.2;
constexpr double kAspect = 16.0 / 9.0;

struct Direction {
    double x, y, z;
};

/// Turning the bytes of a number round is its own inverse.
double as_stored(double x) { return ledouble_to_cpu(&x); }
float as_stored(float x) { return lefloat_to_cpu(&x); }

unsigned char code(double c) { return static_cast<unsigned char>(std::lround(c)); }

class Stars {
public:
    Direction direction() {
        const double y = 2 * unit() - 1;
        const double turn = 2 * 3.14159265358979323846 * unit();
        const double r = std::sqrt(1 - y * y);
        return {r * std::cos(turn), y, r * std::sin(turn)};
    }
    /// By the law of counts, down to `faintest`.
    double magnitude(double faintest) { return faintest + std::log10(1 - unit()) / kCountSlope; }
    double unit() { return std::uniform_real_distribution<double>(0, 1)(random_); }

    star at(const Direction& d, double magnitude) {
        return at(d, static_cast<float>(std::pow(10.0, -0.4 * magnitude)));
    }
    star at(const Direction& d, float luminance) {
        star s = {};
        s.lon = as_stored(std::fmod(std::atan2(d.z, d.x) * kDegrees + 360, 360));
        s.lat = as_stored(std::asin(d.y) * kDegrees);
        s.luminance = as_stored(luminance);
        // sRGB codes of black bodies from 20000 K over white to 3200 K.
        const double warmth = unit();
        s.r = code(std::min(255.0, 169 + 172 * warmth));
        s.g = code(warmth < 0.5 ? 192 + 116 * warmth : 250 - 120 * (warmth - 0.5));
        s.b = code(std::min(255.0, 255 - 270 * (warmth - 0.5)));
        s.distance = as_stored(3 * std::pow(1000.0 / 3, unit()));
        return s;
    }

private:
    std::mt19937_64 random_{kSeed};
};

/// `count` stars above the threshold wherever `is_wanted`.
template <class Wanted>
std::vector<star> bright_sky(u32 count, Wanted is_wanted) {
    Stars stars;
    std::vector<star> sky;
    sky.reserve(count);
    while (sky.size() < count) {
        const Direction d = stars.direction();
        if (is_wanted(d)) {
            sky.push_back(stars.at(d, stars.magnitude(kThresholdMagnitude)));
        }
    }
    return sky;
}

void must(bool ok, const char* what) {
    if (!ok) {
        throw std::runtime_error(std::string(what) + ": " + std::strerror(errno));
    }
}

#if defined(POSIX_FADV_DONTNEED)
/// Share of the open file's pages that are in memory.
double resident_share(int file, std::size_t bytes) {
    void* map = mmap(nullptr, bytes, PROT_READ, MAP_SHARED, file, 0);
    must(map != MAP_FAILED, "mmap");
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    std::vector<unsigned char> pages((bytes + page - 1) / page);
    must(mincore(map, bytes, pages.data()) == 0, "mincore");
    munmap(map, bytes);
    const auto resident =
        std::count_if(pages.begin(), pages.end(), [](unsigned char p) { return (p & 1U) != 0; });
    return static_cast<double>(resident) / static_cast<double>(pages.size());
}
#endif

}  // namespace

std::vector<star> whole_sky(u32 count, double faintest) {
    Stars stars;
    std::vector<star> sky;
    sky.reserve(count);
    while (sky.size() < count) {
        const Direction d = stars.direction();
        sky.push_back(stars.at(d, stars.magnitude(faintest)));
    }
    return sky;
}

std::vector<star> faint_sky(u32 count) {
    Stars stars;
    std::vector<star> sky;
    sky.reserve(count);
    while (sky.size() < count) {
        const Direction d = stars.direction();
        sky.push_back(stars.at(d, 12 + stars.unit()));
    }
    return sky;
}

std::vector<star> off_frame_sky(u32 count) {
    // A tenth of the frame away from its sides: farther than any default spot reaches.
    return bright_sky(count, [](const Direction& d) {
        return d.z > 0 && (std::fabs(d.x) * kFocal > 1.1 * kAspect * d.z ||
                           std::fabs(d.y) * kFocal > 1.1 * d.z);
    });
}

std::vector<star> behind_sky(u32 count) {
    return bright_sky(count, [](const Direction& d) { return d.z < -0.1; });
}

std::vector<star> framed_sky(u32 count, float luminance) {
    Stars stars;
    std::vector<star> sky;
    sky.reserve(count);
    while (sky.size() < count) {
        const double x = kAspect * (2 * stars.unit() - 1) / kFocal;
        const double y = (2 * stars.unit() - 1) / kFocal;
        const double length = std::sqrt(x * x + y * y + 1);
        sky.push_back(stars.at({x / length, y / length, 1 / length}, luminance));
    }
    return sky;
}

std::vector<star> shipped_sky() {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> table(std::fopen(LUMIVAR_CATALOGUE, "r"),
                                                                std::fclose);
    must(table != nullptr, LUMIVAR_CATALOGUE);
    Stars stars;
    std::vector<star> sky;
    char line[200];
    must(std::fgets(line, sizeof line, table.get()) != nullptr, LUMIVAR_CATALOGUE);
    while (std::fgets(line, sizeof line, table.get()) != nullptr) {
        double right_ascension = 0, declination = 0, magnitude = 0;
        must(std::sscanf(line, "%lf,%lf,%lf", &right_ascension, &declination, &magnitude) == 3,
             LUMIVAR_CATALOGUE);
        star s = stars.at(Direction{1, 0, 0}, magnitude);
        s.lon = as_stored(right_ascension);
        s.lat = as_stored(declination);
        sky.push_back(s);
    }
    return sky;
}

SkyFile::SkyFile(const std::vector<star>& stars)
    : path_((std::filesystem::temp_directory_path() / "lumivar-sky-XXXXXX").string()),
      stars_(static_cast<u32>(stars.size())) {
    const int file = mkstemp(path_.data());
    must(file >= 0, path_.c_str());
    std::FILE* stream = fdopen(file, "wb");
    must(stream != nullptr, "fdopen");
    star header = {};
    std::memcpy(&header, kStarHeaderWord2, kStarHeaderWordBytes);
    must(std::fwrite(&header, sizeof header, 1, stream) == 1, "fwrite");
    must(std::fwrite(stars.data(), sizeof(star), stars.size(), stream) == stars.size(), "fwrite");
    must(std::fclose(stream) == 0, "fclose");
}

SkyFile::~SkyFile() { std::remove(path_.c_str()); }

StarInput& SkyFile::input() {
    if (!input_) {
        input_.reset(op_stars_file_input(path_.c_str()));
    }
    input_->reset();
    return *input_;
}

void SkyFile::close() { input_.reset(nullptr); }

double SkyFile::bytes() const { return (stars_ + 1.0) * sizeof(star); }

bool SkyFile::drop_from_page_cache() {
    // A mapped page is not forgotten.
    close();
#if defined(POSIX_FADV_DONTNEED)
    const int file = open(path_.c_str(), O_RDONLY);
    must(file >= 0, path_.c_str());
    // Nor is a page that is not on the disk yet.
    must(fsync(file) == 0, "fsync");
    const bool asked = posix_fadvise(file, 0, 0, POSIX_FADV_DONTNEED) == 0;
    const double left = resident_share(file, (std::size_t{stars_} + 1) * sizeof(star));
    ::close(file);
    return asked && left < 0.01;
#else
    return false;
#endif
}

}  // namespace bench
