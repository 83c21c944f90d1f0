#include "gltf_file.h"

#include <host/camera.h>
#include <host/quaternion.h>

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

host::Matrix scaled_turned_moved(const Numbers& scale, const Numbers& turn,
                                 const Numbers& translation) {
    host::Matrix m = host::matrix_of({turn[3], turn[0], turn[1], turn[2]},
                                     {translation[0], translation[1], translation[2]});
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

/// What the animations do to each property, by the pointer to it: "/nodes/3/translation",
/// "/cameras/0/perspective/yfov". A file's animations move much that no camera hangs on, in ways
/// that are not read here, so a channel is read only when its property is asked for.
class Animations {
public:
    Animations(const GltfDocument& document, std::vector<std::string>& warnings)
        : document_(document), warnings_(warnings) {
        const auto animations = document.root().find("animations");
        for (std::size_t i = 0; animations && i < animations->array().size(); ++i) {
            const JsonPlace channels = (*animations)[i]["channels"];
            const JsonPlace samplers = (*animations)[i]["samplers"];
            for (std::size_t c = 0; c < channels.array().size(); ++c) {
                enter(channels[c], samplers.array());
            }
        }
    }

    /// Nothing where the property stands still. Of several channels that move it the first holds.
    const GltfTrack* track(const std::string& pointer, std::size_t components,
                           GltfTrack::Kind kind) {
        if (const auto read = tracks_.find(pointer); read != tracks_.end()) {
            return &read->second;
        }
        const auto found = channels_.find(pointer);
        if (found == channels_.end()) {
            return nullptr;
        }
        const Channel& channel = found->second;
        const JsonPlace sampler =
            channel.samplers[channel.place["sampler"].index(channel.samplers.size())];
        const auto read =
            tracks_.emplace(pointer, GltfTrack(document_, sampler, components, kind)).first;
        if (channel.is_repeated) {
            warnings_.push_back("several animations move " + pointer + "; the first is taken");
        }
        return &read->second;
    }

    /// Throws `Failure` where a channel moves what no node has.
    void check_node(const std::string& prefix) const {
        each_below(prefix, [](const std::string& property, const Channel& channel) {
            const JsonPlace path = channel.place["target"]["path"];
            if (property != "translation" && property != "rotation" && property != "scale" &&
                path.text() != "pointer") {
                path.fail("\"translation\", \"rotation\", \"scale\", \"weights\" or \"pointer\"");
            }
        });
    }
    /// Warns of all that moves in a camera but its angle, once however many nodes show it.
    void check_camera(const std::string& prefix) {
        if (!checked_cameras_.insert(prefix).second) {
            return;
        }
        each_below(prefix, [&](const std::string& property, const Channel& /*channel*/) {
            if (property != "perspective/yfov") {
                warnings_.push_back("the animation of " + prefix + property + " is not read");
            }
        });
    }

private:
    struct Channel {
        JsonPlace place;
        JsonPlace samplers;
        bool is_repeated = false;
    };

    void enter(const JsonPlace& channel, const JsonPlace& samplers) {
        const JsonPlace target = channel["target"];
        const std::string path = target["path"].text();
        std::string pointer;
        if (path == "pointer") {
            pointer = target["extensions"]["KHR_animation_pointer"]["pointer"].text();
        } else if (target.has("node") && path != "weights") {
            const std::size_t nodes = document_.root()["nodes"].array().size();
            pointer = "/nodes/" + std::to_string(target["node"].index(nodes)) + "/" + path;
        } else {
            return;  // as the standard wants it: without a target it is passed over
        }
        const auto [entry, is_new] = channels_.try_emplace(pointer, Channel{channel, samplers});
        entry->second.is_repeated = entry->second.is_repeated || !is_new;
    }

    /// Calls `use` with what follows the prefix, and the channel.
    template <typename Use>
    void each_below(const std::string& prefix, const Use& use) const {
        for (auto at = channels_.lower_bound(prefix);
             at != channels_.end() && at->first.starts_with(prefix); ++at) {
            use(at->first.substr(prefix.size()), at->second);
        }
    }

    const GltfDocument& document_;
    std::vector<std::string>& warnings_;
    std::map<std::string, Channel> channels_;
    std::map<std::string, GltfTrack> tracks_;  ///< those that were asked for
    std::set<std::string> checked_cameras_;
};

/// A node's place in the one above it.
class Node {
public:
    Node(const JsonPlace& node, std::size_t index, Animations& animations) {
        const std::string prefix = "/nodes/" + std::to_string(index) + "/";
        animations.check_node(prefix);
        moved_by_ = {animations.track(prefix + "translation", 3, GltfTrack::Kind::Numbers),
                     animations.track(prefix + "rotation", 4, GltfTrack::Kind::Rotation),
                     animations.track(prefix + "scale", 3, GltfTrack::Kind::Numbers)};
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
    GltfCamera(const JsonPlace& perspective, std::size_t index, Animations& animations)
        : yfov_(perspective["yfov"].number()) {
        const std::string prefix = "/cameras/" + std::to_string(index) + "/";
        animations.check_camera(prefix);
        yfov_moved_by_ = animations.track(prefix + "perspective/yfov", 1, GltfTrack::Kind::Numbers);
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

/// A node that has a camera.
struct CameraNode {
    std::string name;
    std::size_t node;
    std::size_t camera;
};

std::vector<CameraNode> camera_nodes(const JsonPlace& nodes, const JsonPlace& cameras) {
    std::vector<CameraNode> found;
    std::set<std::string> names;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        if (const auto reference = nodes[i].find("camera")) {
            const std::size_t index = reference->index(cameras.size());
            found.push_back({name_of(nodes[i], cameras[index], index, names), i, index});
        }
    }
    return found;
}

/// Leaves the one of that name.
void choose(std::vector<CameraNode>& found, const std::string& name, const std::string& path) {
    const auto chosen = std::find_if(found.begin(), found.end(),
                                     [&](const CameraNode& node) { return node.name == name; });
    if (chosen == found.end()) {
        std::vector<std::string> names;
        names.reserve(found.size());
        for (const CameraNode& node : found) {
            names.push_back(node.name);
        }
        fail_unknown_camera(path, name, names);
    }
    found = {CameraNode(*chosen)};
}

}  // namespace

CameraFile read_gltf(const std::string& path, const std::string& name) {
    const GltfDocument document(path);
    const JsonPlace root = document.root();
    CameraFile file;
    if (!root.has("nodes") || !root.has("cameras")) {
        return file;
    }
    const JsonPlace nodes = root["nodes"].array();
    const JsonPlace cameras = root["cameras"].array();
    std::vector<CameraNode> wanted = camera_nodes(nodes, cameras);
    if (!name.empty() && !wanted.empty()) {
        choose(wanted, name, path);
    }
    std::vector<std::string> left_out;
    const auto is_another_kind = [&](const CameraNode& node) {
        if (cameras[node.camera]["type"].text() == "perspective") {
            return false;
        }
        const std::string reason = "the camera \"" + node.name + "\" is not one of perspective";
        if (!name.empty()) {
            throw Failure(path + ": " + reason);
        }
        left_out.push_back(reason + " and is passed over");
        return true;
    };
    std::erase_if(wanted, is_another_kind);

    const auto parents = parents_of(nodes);
    Animations animations(document, file.warnings);
    const auto read = [&](const CameraNode& node) {
        GltfCamera sampled(cameras[node.camera]["perspective"], node.camera, animations);
        std::size_t above = 0;
        for (std::optional<std::size_t> at = node.node; at; at = parents[*at]) {
            if (++above > nodes.size()) {
                nodes[node.node].complain("it hangs on itself");
            }
            sampled.hang_on(Node(nodes[*at], *at, animations));
        }
        FileCamera camera;
        camera.name = node.name;
        camera.samples = refined(
            key_times(sampled), [&](double seconds) { return sampled.at(seconds); }, path,
            node.name);
        return camera;
    };
    for (const CameraNode& node : wanted) {
        try {
            file.cameras.push_back(read(node));
        } catch (const Failure& failure) {
            if (wanted.size() == 1) {
                throw;
            }
            left_out.push_back(left_out_warning(node.name, failure, path));
        }
    }
    // Before the others: where no camera is left, the first warning is told as the reason.
    file.warnings.insert(file.warnings.begin(), left_out.begin(), left_out.end());
    return file;
}

}  // namespace lumivar
