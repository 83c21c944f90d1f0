// The numbers of a glTF file: the containers .gltf and .glb, buffers, and accessors onto them.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "json_place.h"

namespace lumivar {

class GltfDocument {
public:
    /// Reads a file of either kind; buffers beside it when they are asked for. Throws `Failure`.
    explicit GltfDocument(const std::string& path);

    JsonPlace root() const { return {*json_, path_}; }
    const std::string& path() const { return path_; }

    /// The numbers of the accessor whose index stands at `place`, which must be of `components`
    /// each: 1 for SCALAR, 3 for VEC3, 4 for VEC4. Floats, and normalised integers as parts of 1.
    /// Throws `Failure`.
    std::vector<double> numbers(const JsonPlace& place, std::size_t components) const;

private:
    const std::string& buffer(const JsonPlace& place) const;

    std::string path_;
    std::string chunk_;  ///< the binary chunk of a .glb
    bool has_chunk_ = false;
    std::shared_ptr<const nlohmann::json> json_;
    mutable std::map<std::size_t, std::string> buffers_;  ///< those that were asked for
};

}  // namespace lumivar
