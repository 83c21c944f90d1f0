// The text of paths. '/' stands between the names, whatever the system.
#pragma once

#include <base/string.h>

namespace OSAPI {

/// The text after the last '/': empty when the path ends in one, the whole path when it has none.
String basename(const char* path);

/// The text before the last '/'. "/" for a name directly under the root, "." for a bare name,
/// empty for an empty path.
String dirname(const char* path);

/// The text after the last '.' of the whole path, without the dot; empty when there is none.
/// A path of more than 14 characters that ends in ".inprogress" (in any case) has the extension of
/// the path before it: that of the file which is being written there.
String extension(const char* path);

}  // namespace OSAPI
