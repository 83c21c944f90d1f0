// Whether the converter of USD cameras can run here: what it needs is not asked of everybody.
#pragma once

#include <filesystem>

#include "usd_cameras.h"

inline bool usd_is_here() {
    return std::filesystem::exists(lumivar::usd_environment() / "bin" / "python");
}

/// Ends a test that needs it and names the reason.
#define SKIP_WITHOUT_USD()                                                             \
    if (!usd_is_here()) {                                                              \
        GTEST_SKIP() << "not run: needs usd-core, which scripts/install-usd installs"; \
    }
