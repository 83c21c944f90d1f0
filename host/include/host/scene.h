// A scene: the composition, its camera and the effect's controls, as read from a JSON file.
//
// The stand-in host plays a scene to the plug-in. Nothing here knows the plug-in or the host's records:
// a scene is plain values over time. Times are seconds of composition time.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

namespace host {

/// A scene that cannot be used: the message names the file, the place (a JSON pointer, or line and
/// column for broken JSON) and what was expected there.
class SceneError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A number over time: constant, or keyframes joined by straight lines and held before the first and
/// after the last.
class Track {
public:
    struct Key {
        double time;  ///< seconds of composition time
        double value;
    };

    Track(double constant) : keys_{{0.0, constant}} {}  // NOLINT(google-explicit-constructor)
    /// `keys` must be non-empty, with times strictly increasing.
    explicit Track(std::vector<Key> keys);

    double at(double seconds) const;
    bool is_constant() const { return keys_.size() == 1; }
    const std::vector<Key>& keys() const { return keys_; }

private:
    std::vector<Key> keys_;
};

/// Frames a second as a fraction: 24/1, or 24000/1001 for 23.976.
struct FrameRate {
    std::uint32_t num = 24;
    std::uint32_t den = 1;
    double per_second() const { return static_cast<double>(num) / den; }
};

/// A time as the effect interface tells it: `value` / `scale` seconds.
struct Time {
    std::int32_t value = 0;
    std::uint32_t scale = 1;
    double seconds() const { return static_cast<double>(value) / scale; }
};

struct Composition {
    int width = 1920;
    int height = 1080;
    FrameRate frame_rate;
    double duration = 10.0;  ///< seconds
    bool motion_blur = false;
    Track shutter_angle = 180.0;  ///< degrees; 360 is the whole frame
    Track shutter_phase = -90.0;  ///< degrees from the frame's time to the shutter's opening

    /// Number of whole frames.
    int frames() const;
    /// The time of frame `index`, on a scale fine enough to hold the shutter's opening and duration
    /// exactly.
    Time frame_time(int index) const;
    /// Any time, on a scale fine enough for it (to a millisecond of a frame at worst).
    Time time_at(double seconds) const;
    /// When the shutter opens for the frame at `time` and how long it stays open; each exact.
    void shutter_range(Time time, Time& start, Time& duration_out) const;
};

/// 16 numbers, row by row; points are row vectors multiplied on the left, the translation is row 3.
using Matrix = std::array<double, 16>;

/// The 3D camera layer. World and camera space have y pointing down, as the host has it; the camera
/// looks along +z.
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

/// One control that the scene sets. Whether the plug-in has it is found out when the scene is played.
struct ControlSetting {
    std::string name;
    std::string place;  ///< where it was said, for messages: "FILE: /controls/Star Brightness"
    /// A number, a choice or switch (true and false are 1 and 0), a choice by name, or a colour.
    std::variant<Track, std::string, Colour> value;
};

struct Scene {
    std::string source;  ///< file name, for messages
    Composition composition;
    std::shared_ptr<const Camera> camera;  ///< null: the composition has no camera
    std::vector<ControlSetting> controls;
};

/// Reads a scene file. Throws `SceneError`.
Scene load_scene(const std::string& path);
/// Reads a scene from text; `source` stands for the file's name in messages. Throws `SceneError`.
Scene parse_scene(const std::string& text, const std::string& source);

}  // namespace host
