#include <gtest/gtest.h>
#include <osapi/host_name.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "support/child.h"
#include "support/expect_throw.h"
#include "support/faults.h"

namespace {

using OSAPI::Syscalls;

// The name is kept for the whole process: each test asks in one that has not asked yet.

TEST(HostName, IsTheSystemsOwn) {
    EXPECT_EQ(result_in_child([] {
                  char name[256] = {};
                  return gethostname(name, sizeof name - 1) == 0 &&
                                 std::strcmp(OSAPI::gethostname().c_str(), name) == 0
                             ? 0
                             : 1;
              }),
              0);
}

TEST(HostName, IsAskedForOnce) {
    EXPECT_EQ(result_in_child([] {
                  const Intercept<&Syscalls::gethostname> asks([&](char* name, std::size_t size) {
                      std::strcpy(name, asks.calls() == 1 ? "first" : "second");
                      return size == 256 ? 0 : -1;
                  });
                  const bool kept = std::strcmp(OSAPI::gethostname().c_str(), "first") == 0 &&
                                    std::strcmp(OSAPI::gethostname().c_str(), "first") == 0;
                  return kept && asks.calls() == 1 ? 0 : 1;
              }),
              0);
}

TEST(HostName, FailureIsNotKept) {
    for (const int error : kErrors) {
        EXPECT_EQ(result_in_child([error] {
                      const Fault<&Syscalls::gethostname> fault(error);
                      const std::string message = thrown_message([] { OSAPI::gethostname(); });
                      const std::string expected = with_error("gethostname", error) + " in <";
                      if (message.compare(0, expected.size(), expected) != 0) {
                          return 1;
                      }
                      return OSAPI::gethostname().len() > 0 && fault.calls() == 2 ? 0 : 2;
                  }),
                  0);
    }
}

TEST(HostName, LongNameIsCutToTheBuffer) {
    EXPECT_EQ(result_in_child([] {
                  const Intercept<&Syscalls::gethostname> asks([](char* name, std::size_t size) {
                      std::memset(name, 'n', size);
                      return 0;
                  });
                  return OSAPI::gethostname().len() == 255 ? 0 : 1;
              }),
              0);
}

}  // namespace
