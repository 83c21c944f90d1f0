// A scene: the composition, its camera and the effect's controls, as read from a JSON file.
//
// The stand-in host plays a scene to the plug-in. Nothing here knows the plug-in or the host's
// records: a scene is plain values over time. Times are seconds of composition time. The form of
// the file is told member by member in scenes/README.md.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

namespace host {

/// A scene that cannot be used. The message is one line: "FILE: PLACE: expected ..., found ...",
/// where the place is a JSON pointer (left out for the scene itself), or line and column for broken
/// JSON.
class SceneError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// How a value goes from one key to the next.
enum class Interpolation {
    Linear,  ///< in a straight line
    Smooth,  ///< in a curve without corners
    Hold,    ///< not at all until the next key's time, where it jumps
};

/// A number over time: constant, or keyframes, held before the first and after the last. At a key's
/// time the value is exactly the key's, and between two keys it never leaves their range.
///
/// A smooth way from key 0 to key 1, with h = t1 - t0 and s = (t - t0) / h, is the cubic with the
/// slopes m0 and m1 at its ends:
///
///     v0 + (v1 - v0) (3 s^2 - 2 s^3) + h m0 (s^3 - 2 s^2 + s) + h m1 (s^3 - s^2)
///
/// The slope at a key, whose ways before and after rise by a and b a second on average, is
///
/// - 0 at the first and the last key, at a turning point (a and b differ in sign or one is 0) and
///   beside a way that holds;
/// - that of the straight line where one of the two ways is linear;
/// - else (v_next - v_before) / (t_next - t_before), as of Catmull and Rom;
///
/// but never steeper than three times the less steep of a and b, so that the curve stays between
/// its keys (Fritsch and Carlson, 1980).
class Track {
public:
    struct Key {
        double time;  ///< seconds of composition time
        double value;
        Interpolation interpolation = Interpolation::Linear;  ///< from here to the next key
    };

    Track(double constant = 0.0) : keys_{{0.0, constant}} {}  // NOLINT(google-explicit-constructor)
    /// `keys` must be non-empty, with times strictly increasing; throws `std::invalid_argument`.
    explicit Track(std::vector<Key> keys);

    double at(double seconds) const;
    /// One key, that is the same value at all times.
    bool is_constant() const { return keys_.size() == 1; }
    const std::vector<Key>& keys() const { return keys_; }
    /// The track of `factor` times these values.
    Track scaled(double factor) const;

private:
    double smooth_at(std::size_t before, double seconds) const;
    double slope_at(std::size_t key) const;

    std::vector<Key> keys_;
};

/// Frames a second as a fraction, not zero: 24/1, or 24000/1001 for 23.976.
struct FrameRate {
    std::uint32_t num = 24;
    std::uint32_t den = 1;
    double per_second() const { return static_cast<double>(num) / den; }
};

/// The fraction that a decimal number of frames a second means: 23.976, 29.97, 47.952, 59.94 and
/// 119.88 are 1000/1001 of the whole rate, others the nearest fraction with a denominator up to
/// 1000. `per_second` is 0.001 to 999.
FrameRate frame_rate_of(double per_second);

/// A time as the effect interface tells it: `value` / `scale` seconds.
struct Time {
    std::int32_t value = 0;
    std::uint32_t scale = 1;
    double seconds() const { return static_cast<double>(value) / scale; }
};

/// The picture's frame in space and time.
///
/// All times that it hands out stand on one scale S, so that they can be compared and multiplied as
/// integers. S is the smallest scale that holds the duration of a frame and, where shutter angle
/// and phase are constant (taken to 1/1000 degree), the shutter's opening and duration exactly. The
/// effect divides the shutter into up to 100 segments by multiplying scale and value with their
/// number in 32 bits: where S would not leave room for that to the end of the composition, the
/// frames stay exact and the shutter is rounded to the finest scale that does. The limit gives way
/// only where even whole frames need a larger scale. With a keyed angle or phase S has at least
/// 1000 ticks to the frame (within the same limit) and the shutter is rounded to a tick.
///
/// Functions that return a `Time` throw `std::out_of_range` when its value does not fit 32 bits.
struct Composition {
    int width = 1920;   ///< pixels
    int height = 1080;  ///< pixels
    FrameRate frame_rate;
    double duration = 10.0;  ///< seconds
    /// What the frame at time 0 is called; a shot of the field begins at 1001, say. Times and the
    /// indices below count from the composition's start all the same.
    int first_frame = 0;
    bool motion_blur = false;
    Track shutter_angle = 180.0;  ///< degrees; 360 is the whole frame
    Track shutter_phase = -90.0;  ///< degrees from the frame's time to the shutter's opening

    /// Number of whole frames; at least 1.
    int frames() const;
    /// How long a frame lasts: exact, on the scale S.
    Time frame_duration() const;
    /// The time of frame `index` (which may lie outside the composition): exact, on the scale S.
    Time frame_time(int index) const;
    /// The time nearest to `seconds`: on the scale S where that holds it, else on a multiple of S
    /// with at least 1000 ticks to the frame (within the limit told above).
    Time time_at(double seconds) const;
    /// When the shutter opens for the frame at `time` and how long it stays open, on one scale.
    /// Exact for constant angle and phase as told above, for times that this composition has handed
    /// out; a keyed angle or phase is taken at `time`. Both are told whether or not motion blur is
    /// on. The opening may be negative.
    void shutter_range(Time time, Time& start, Time& duration_out) const;
};

/// 16 numbers, row by row; points are row vectors multiplied on the left, the translation is row 3.
using Matrix = std::array<double, 16>;

/// The 3D camera layer; see host/camera.h for the kinds there are. World and camera space have y
/// pointing down, as the host has it; the camera looks along +z.
class Camera {
public:
    virtual ~Camera() = default;
    /// Layer-to-world matrix at a time.
    virtual Matrix layer_to_world(double seconds) const = 0;
    /// Distance to the image plane, in pixels of the composition.
    virtual double zoom(double seconds) const = 0;
};

/// A colour control's value: red, green, blue in 0..255.
struct Colour {
    std::array<Track, 3> channels = {Track(0.0), Track(0.0), Track(0.0)};
};

/// One control that the scene sets. Whether the plug-in has it is found out when the scene is
/// played.
struct ControlSetting {
    std::string name;
    std::string place;  ///< where it was said, for messages: "FILE: /controls/Star Brightness"
    /// A number or switch (true and false are 1 and 0) or a choice by number; a choice by name; or
    /// a colour.
    std::variant<Track, std::string, Colour> value;
};

/// What a scene asks of the picture file that is made of a frame. The host only reads it: frames
/// are the same with and without it. What the scene does not say is left empty.
struct Picture {
    std::optional<double> exposure;           ///< stops, -100 to 100
    std::optional<std::string> view;          ///< "photo" or "plain"
    std::optional<double> halo;               ///< strength, not below 0
    std::optional<Track> limiting_magnitude;  ///< the faintest stars to be drawn, any number
    /// Where the limit was said, for messages: "FILE: /picture/limiting_magnitude".
    std::string limiting_magnitude_place;
};

struct Scene {
    std::string source;  ///< file name, for messages
    Composition composition;
    std::shared_ptr<const Camera> camera;  ///< null: the composition has no camera
    std::vector<ControlSetting> controls;  ///< in the order of the file, each name once
    Picture picture;
};

/// Where a star stands.
struct StarPlace {
    double ra = 0.0;                 ///< right ascension, degrees
    double dec = 0.0;                ///< declination, degrees
    std::optional<double> distance;  ///< from the Sun, parsecs, above 0; nothing: not known
};

/// What is known of a star's name.
struct StarAnswer {
    std::optional<StarPlace> place;      ///< nothing: no star has this name
    std::optional<std::string> nearest;  ///< the likely name then, for the message
};

/// Finds stars for a scene that names them. The host itself knows no catalogue.
using StarResolver = std::function<StarAnswer(const std::string& name)>;

/// Reads a scene file; "-" is standard input, which is then the scene's `source` in these words.
/// Throws `SceneError`, also for a file that cannot be read. Without `stars` a star's name in the
/// scene is an error.
Scene load_scene(const std::string& path, const StarResolver& stars = {});
/// Reads a scene from JSON text (UTF-8; `//` and `/* */` comments are allowed); `source` stands for
/// the file's name in messages. Throws `SceneError`.
Scene parse_scene(const std::string& text, const std::string& source,
                  const StarResolver& stars = {});

/// Reads one control's value from JSON text, in any form that a scene takes. `place` stands for the
/// file's name and place in messages. Throws `SceneError`.
ControlSetting parse_control(const std::string& name, const std::string& text,
                             const std::string& place);

}  // namespace host
