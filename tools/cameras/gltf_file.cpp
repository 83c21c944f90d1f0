#include "gltf_file.h"

#include <host/camera.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <map>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <numbers>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "camera_path.h"
#include "failure.h"
#include "gltf_buffers.h"
#include "gltf_track.h"
#include "json_place.h"
#include "path_refinement.h"
#include "rotation_order.h"
#include "text_numbers.h"

namespace lumivar {
namespace {

using Numbers = std::array<double, 4>;

host::Matrix scaled_turned_moved(const Numbers& scale, const Numbers& q,
                                 const Numbers& translation) {
    const auto [x, y, z, w] = q;
    host::Matrix m = {1.0 - 2.0 * (y * y + z * z),
                      2.0 * (x * y + w * z),
                      2.0 * (x * z - w * y),
                      0.0,  //
                      2.0 * (x * y - w * z),
                      1.0 - 2.0 * (x * x + z * z),
                      2.0 * (y * z + w * x),
                      0.0,  //
                      2.0 * (x * z + w * y),
                      2.0 * (y * z - w * x),
                      1.0 - 2.0 * (x * x + y * y),
                      0.0,  //
                      translation[0],
                      translation[1],
                      translation[2],
                      1.0};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            m[4 * row + column] *= scale[row];
        }
    }
    return m;
}

/// The numbers of a member, or those that stand for it where it is missing.
template <std::size_t size>
std::array<double, size> numbers_or(const JsonPlace& node, const char* member,
                                    const std::array<double, size>& otherwise) {
    const auto found = node.find(member);
    if (!found) {
        return otherwise;
    }
    std::array<double, size> numbers{};
    found->array(size);
    for (std::size_t i = 0; i < size; ++i) {
        numbers[i] = (*found)[i].number();
    }
    return numbers;
}

/// What an animation does to one property, by the pointer to it: "/nodes/3/translation",
/// "/cameras/0/perspective/yfov".
using Tracks = std::map<std::string, GltfTrack>;

/// A node's place in the one above it.
class Node {
public:
    Node(const JsonPlace& node, std::size_t index, const Tracks& tracks) {
        const std::string pointer = "/nodes/" + std::to_string(index) + "/";
        for (std::size_t i = 0; i < 3; ++i) {
            const auto found =
                tracks.find(pointer + std::array{"translation", "rotation", "scale"}[i]);
            moved_by_[i] = found == tracks.end() ? nullptr : &found->second;
        }
        if (node.has("matrix")) {
            // Stored by columns for column vectors: the same numbers as by rows for row vectors.
            matrix_ = numbers_or<16>(node, "matrix", {});
            if (moved_by_[0] != nullptr || moved_by_[1] != nullptr || moved_by_[2] != nullptr) {
                node.complain("it has a matrix and is animated, which the standard rules out");
            }
            return;
        }
        const auto translation = numbers_or<3>(node, "translation", {0.0, 0.0, 0.0});
        rest_[0] = {translation[0], translation[1], translation[2], 0.0};
        rest_[1] = numbers_or<4>(node, "rotation", {0.0, 0.0, 0.0, 1.0});
        const double length =
            std::hypot(std::hypot(rest_[1][0], rest_[1][1]), std::hypot(rest_[1][2], rest_[1][3]));
        if (!(length > 0.0 && std::isfinite(length))) {
            node["rotation"].fail("a quaternion of length 1");
        }
        for (double& element : rest_[1]) {
            element /= length;
        }
        const auto scale = numbers_or<3>(node, "scale", {1.0, 1.0, 1.0});
        rest_[2] = {scale[0], scale[1], scale[2], 0.0};
    }

    host::Matrix at(double seconds) const {
        const auto value = [&](std::size_t i) {
            return moved_by_[i] == nullptr ? rest_[i] : moved_by_[i]->at(seconds);
        };
        return matrix_ ? *matrix_ : scaled_turned_moved(value(2), value(1), value(0));
    }
    void collect(std::vector<const GltfTrack*>& tracks) const {
        std::copy_if(moved_by_.begin(), moved_by_.end(), std::back_inserter(tracks),
                     [](const GltfTrack* track) { return track != nullptr; });
    }

private:
    std::optional<host::Matrix> matrix_;
    std::array<Numbers, 3> rest_{};  ///< translation, rotation, scale
    std::array<const GltfTrack*, 3> moved_by_{};
};

/// A camera of the file, with what it hangs on.
class GltfCamera {
public:
    GltfCamera(const JsonPlace& perspective, const std::string& pointer, const Tracks& tracks)
        : yfov_(perspective["yfov"].number()) {
        const auto found = tracks.find(pointer + "/perspective/yfov");
        yfov_moved_by_ = found == tracks.end() ? nullptr : &found->second;
        if (const auto ratio = perspective.find("aspectRatio")) {
            aspect_ratio_ = ratio->number();
            if (!(aspect_ratio_ > 0.0)) {
                ratio->fail("a number above 0");
            }
        }
        check(yfov_, perspective["yfov"]);
        if (yfov_moved_by_ != nullptr) {
            for (const double time : yfov_moved_by_->times()) {
                check(yfov_moved_by_->at(time)[0], perspective["yfov"]);
            }
        }
    }
    void hang_on(const Node& node) { chain_.push_back(node); }

    FileCameraSample at(double seconds) const {
        FileCameraSample sample;
        sample.time = seconds;
        sample.camera_to_world = chain_.front().at(seconds);
        for (std::size_t i = 1; i < chain_.size(); ++i) {
            sample.camera_to_world = product(sample.camera_to_world, chain_[i].at(seconds));
        }
        const double yfov = yfov_moved_by_ == nullptr ? yfov_ : yfov_moved_by_->at(seconds)[0];
        FileLens lens =
            FileLens::vertical_fov(std::clamp(yfov * (180.0 / std::numbers::pi), 1e-6, 179.999999));
        if (aspect_ratio_ > 0.0) {
            // tan(xfov / 2) = aspectRatio * tan(yfov / 2)
            lens = {FileLens::Across::Width, lens.ratio / aspect_ratio_};
        }
        sample.lens = lens;
        return sample;
    }
    std::vector<const GltfTrack*> tracks() const {
        std::vector<const GltfTrack*> tracks;
        for (const Node& node : chain_) {
            node.collect(tracks);
        }
        if (yfov_moved_by_ != nullptr) {
            tracks.push_back(yfov_moved_by_);
        }
        return tracks;
    }

private:
    static void check(double yfov, const JsonPlace& place) {
        if (!(yfov > 0.0 && yfov < std::numbers::pi)) {
            place.complain("expected an angle above 0 and below pi, found " + number_text(yfov));
        }
    }

    double yfov_;                ///< radians
    double aspect_ratio_ = 0.0;  ///< 0: not said
    const GltfTrack* yfov_moved_by_ = nullptr;
    std::vector<Node> chain_;  ///< the camera's node first, then those above it
};

/// The times of all keys. A track that jumps gets a second time just before each of its keys, so
/// that it holds until then.
std::vector<double> key_times(const GltfCamera& camera) {
    constexpr double kJustBefore = 1e-6;  // seconds
    std::set<double> times;
    for (const GltfTrack* track : camera.tracks()) {
        times.insert(track->times().begin(), track->times().end());
    }
    std::set<double> all = times;
    for (const GltfTrack* track : camera.tracks()) {
        for (std::size_t i = 1; track->steps() && i < track->times().size(); ++i) {
            const auto key = times.find(track->times()[i]);
            if (*key - *std::prev(key) > 2.0 * kJustBefore) {
                all.insert(*key - kJustBefore);
            }
        }
    }
    if (all.empty()) {
        return {0.0};
    }
    return {all.begin(), all.end()};
}

/// For each node the one above it.
std::vector<std::optional<std::size_t>> parents_of(const JsonPlace& nodes) {
    std::vector<std::optional<std::size_t>> parents(nodes.size());
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        const auto children = nodes[i].find("children");
        for (std::size_t c = 0; children && c < children->array().size(); ++c) {
            const std::size_t child = (*children)[c].index(nodes.size());
            if (parents[child]) {
                (*children)[c].complain("node " + std::to_string(child) +
                                        " hangs on two nodes, this and node " +
                                        std::to_string(*parents[child]));
            }
            parents[child] = i;
        }
    }
    return parents;
}

/// Reads the animations' channels. Of two that move the same property the first holds.
class TrackReader {
public:
    TrackReader(const GltfDocument& document, std::vector<std::string>& warnings)
        : document_(document), warnings_(warnings) {}

    Tracks read() {
        const auto animations = document_.root().find("animations");
        for (std::size_t i = 0; animations && i < animations->array().size(); ++i) {
            const JsonPlace channels = (*animations)[i]["channels"];
            const JsonPlace samplers = (*animations)[i]["samplers"];
            for (std::size_t c = 0; c < channels.array().size(); ++c) {
                read_channel(channels[c], samplers.array());
            }
        }
        return std::move(tracks_);
    }

private:
    void read_channel(const JsonPlace& channel, const JsonPlace& samplers) {
        const JsonPlace target = channel["target"];
        const std::string path = target["path"].text();
        std::string pointer;
        if (path == "pointer") {
            pointer = target["extensions"]["KHR_animation_pointer"]["pointer"].text();
            if (!is_readable(pointer)) {
                if (pointer.starts_with("/cameras/")) {
                    warnings_.push_back("the animation of " + pointer + " is not read");
                }
                return;
            }
        } else if (target.has("node") && path != "weights") {
            const std::size_t nodes = document_.root()["nodes"].array().size();
            pointer = "/nodes/" + std::to_string(target["node"].index(nodes)) + "/" + path;
        } else {
            return;  // as the standard wants it: without a target it is passed over
        }
        const std::string property = pointer.substr(pointer.rfind('/') + 1);
        const bool turns = property == "rotation";
        if (!turns && property != "translation" && property != "scale" && property != "yfov") {
            target["path"].fail(
                "\"translation\", \"rotation\", \"scale\", \"weights\" or "
                "\"pointer\"");
        }
        if (tracks_.count(pointer) != 0) {
            warnings_.push_back("several animations move " + pointer + "; the first is taken");
            return;
        }
        const std::size_t components = turns ? 4 : property == "yfov" ? 1 : 3;
        const JsonPlace sampler = samplers[channel["sampler"].index(samplers.size())];
        tracks_.emplace(pointer,
                        GltfTrack(document_, sampler, components,
                                  turns ? GltfTrack::Kind::Rotation : GltfTrack::Kind::Numbers));
    }

    static bool is_readable(const std::string& pointer) {
        return (pointer.starts_with("/cameras/") && pointer.ends_with("/perspective/yfov")) ||
               (pointer.starts_with("/nodes/") &&
                (pointer.ends_with("/translation") || pointer.ends_with("/rotation") ||
                 pointer.ends_with("/scale")));
    }

    const GltfDocument& document_;
    std::vector<std::string>& warnings_;
    Tracks tracks_;
};

std::string name_of(const JsonPlace& node, const JsonPlace& camera, std::size_t index,
                    std::set<std::string>& taken) {
    std::string name = "camera " + std::to_string(index);
    if (const auto of_node = node.find("name")) {
        name = of_node->text();
    } else if (const auto of_camera = camera.find("name")) {
        name = of_camera->text();
    }
    std::string unique = name;
    for (int number = 2; !taken.insert(unique).second; ++number) {
        unique = name + "#" + std::to_string(number);
    }
    return unique;
}

}  // namespace

CameraFile read_gltf(const std::string& path) {
    const GltfDocument document(path);
    const JsonPlace root = document.root();
    CameraFile file;
    if (!root.has("nodes") || !root.has("cameras")) {
        return file;
    }
    const JsonPlace nodes = root["nodes"].array();
    const JsonPlace cameras = root["cameras"].array();
    const auto parents = parents_of(nodes);
    const Tracks tracks = TrackReader(document, file.warnings).read();
    std::set<std::string> names;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        const auto reference = nodes[i].find("camera");
        if (!reference) {
            continue;
        }
        const std::size_t index = reference->index(cameras.size());
        const JsonPlace description = cameras[index];
        FileCamera camera;
        camera.name = name_of(nodes[i], description, index, names);
        if (description["type"].text() != "perspective") {
            file.warnings.push_back("the camera \"" + camera.name +
                                    "\" is not one of perspective and is passed over");
            continue;
        }
        GltfCamera sampled(description["perspective"], "/cameras/" + std::to_string(index), tracks);
        std::size_t above = 0;
        for (std::optional<std::size_t> node = i; node; node = parents[*node]) {
            if (++above > nodes.size()) {
                nodes[i].complain("it hangs on itself");
            }
            sampled.hang_on(Node(nodes[*node], *node, tracks));
        }
        camera.samples = refined(
            key_times(sampled), [&](double seconds) { return sampled.at(seconds); },
            path + ": the camera \"" + camera.name + "\"");
        file.cameras.push_back(std::move(camera));
    }
    return file;
}

}  // namespace lumivar
