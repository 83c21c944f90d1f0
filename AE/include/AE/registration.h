// What the effect tells the host of itself. The module answers global set-up with it, and the files
// that the host reads before it loads the module are written from it, so that the two cannot
// differ.
#pragma once

#include <host_api/constants.h>

#include <string_view>

namespace registration {

/// As the host's menu shows it, and the menu's group.
inline constexpr std::string_view kName = "Lumivar";
inline constexpr std::string_view kCategory = "Simulation";
/// Saved projects find the effect by this name: it never changes.
inline constexpr std::string_view kMatchName = "Lumivar Star Field";
inline constexpr std::string_view kBundleIdentifier = "org.lumivar.effect";
/// The module's file, which the bundle and the resource file are named after.
inline constexpr std::string_view kExecutable = "Lumivar";
inline constexpr std::string_view kEntryPoint = "EntryPointFunc";

/// The host passes over a bundle without these two codes.
inline constexpr std::string_view kPackageType = "eFKT";
inline constexpr std::string_view kPackageSignature = "FXTC";

inline constexpr A_u_long kMajorVersion = 2;
inline constexpr A_u_long kMinorVersion = 0;
inline constexpr A_u_long kBugVersion = 0;
inline constexpr A_u_long kStage = PF_Stage_DEVELOP;
inline constexpr A_u_long kBuild = 1;
inline constexpr A_u_long kVersion =
    PF_VERSION(kMajorVersion, kMinorVersion, kBugVersion, kStage, kBuild);

/// The effect interface that the module is built for.
inline constexpr A_u_long kInterfaceMajorVersion = 13;
inline constexpr A_u_long kInterfaceMinorVersion = 0;

inline constexpr PF_OutFlags kOutFlags = PF_OutFlag_I_USE_SHUTTER_ANGLE |
                                         PF_OutFlag_I_HAVE_EXTERNAL_DEPENDENCIES |
                                         PF_OutFlag_DEEP_COLOR_AWARE;
/// Flags that a frame's controls may turn on have to be on here too.
inline constexpr PF_OutFlags2 kOutFlags2 =
    PF_OutFlag2_SUPPORTS_QUERY_DYNAMIC_FLAGS | PF_OutFlag2_I_USE_3D_CAMERA |
    PF_OutFlag2_I_USE_3D_LIGHTS | PF_OutFlag2_SUPPORTS_SMART_RENDER | PF_OutFlag2_FLOAT_COLOR_AWARE;

/// Whether the host takes `text` as a name (1 to 31 characters) and it can stand in a property list
/// as it is.
constexpr bool is_plain_name(std::string_view text) {
    for (const char character : text) {
        if (character < ' ' || character > '~' || character == '<' || character == '>' ||
            character == '&') {
            return false;
        }
    }
    return !text.empty() && text.size() <= 31;
}
static_assert(is_plain_name(kName) && is_plain_name(kCategory) && is_plain_name(kMatchName));
static_assert(is_plain_name(kBundleIdentifier) && is_plain_name(kExecutable) &&
              is_plain_name(kEntryPoint));
static_assert(kPackageType.size() == 4 && kPackageSignature.size() == 4);

}  // namespace registration
