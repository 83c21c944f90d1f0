// The stars of the golden pictures: the brightest ones of the table of bright stars, in simple
// colours.
#pragma once

#include <string>
#include <vector>

#include "support/catalogue.h"
#include "support/reference_renderer.h"

namespace golden {

/// The stars of a table like data/bright-stars.csv to V = 4. Throws `std::runtime_error` when there
/// is none.
std::vector<reference::Star> load_stars(const std::string& table);

/// The same for a star file.
std::vector<support::CatalogueStar> catalogue_stars(const std::vector<reference::Star>& stars);

}  // namespace golden
