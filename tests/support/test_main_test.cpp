// Two cases of one name, as two sources of a program might have them: the program must refuse to
// run.
#include <gtest/gtest.h>

namespace one {
TEST(Clash, Name) {}
}  // namespace one

namespace other {
TEST(Clash, Name) {}
}  // namespace other
