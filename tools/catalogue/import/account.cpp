#include "import/account.h"

#include <cstddef>

namespace lumivar {

void Account::skip(FaultKind kind, const std::string& place) {
    Entry& entry = entries_[static_cast<std::size_t>(kind)];
    if (entry.rows++ == 0) {
        entry.first = place;
    }
    ++skipped_;
    faulty_ += is_expected(kind) ? 0U : 1U;
}

std::uint64_t Account::skipped(FaultKind kind) const {
    return entries_[static_cast<std::size_t>(kind)].rows;
}

std::string Account::reasons(const char* before, const char* between) const {
    std::string text;
    for (int kind = 0; kind < kFaultKinds; ++kind) {
        const Entry& entry = entries_[static_cast<std::size_t>(kind)];
        if (entry.rows > 0) {
            text += text.empty() ? "" : between;
            text += before;
            text += std::to_string(entry.rows);
            text += ": ";
            text += fault_text(static_cast<FaultKind>(kind));
            text += " (first: ";
            text += entry.first;
            text += ")";
        }
    }
    return text;
}

}  // namespace lumivar
