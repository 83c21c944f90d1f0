#include <host/nearest.h>

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace host {
namespace {

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

/// Letters to insert, remove or replace (Levenshtein), one row of the table at a time.
std::size_t distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t replaced = diagonal + (lower(a[i]) == lower(b[j]) ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({row[j] + 1, diagonal + 1, replaced});
        }
    }
    return row.back();
}

}  // namespace

std::optional<std::string> nearest(std::string_view name,
                                   const std::vector<std::string>& candidates) {
    std::optional<std::string> best;
    std::size_t limit = name.size() / 2;
    for (const std::string& candidate : candidates) {
        const std::size_t changes = distance(name, candidate);
        if (changes <= limit && (!best || changes < limit)) {
            best = candidate;
            limit = changes;
        }
    }
    return best;
}

}  // namespace host
