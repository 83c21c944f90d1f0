#include <base/exceptions.h>
#include <gtest/gtest.h>
#include <support/captured_output.h>
#include <support/expect_throw.h>
#include <support/failing_allocator.h>

#include <cstring>
#include <string>
#include <type_traits>

namespace {

template <class Act>
std::string errors_of(Act act) {
    return output_of(stderr, act);
}

const char* const kFunction = "OSAPI::fd_t OSAPI::connect_tcp(const char*, int)";

void need_port(int port) { XASSERT(port > 0 && port <= 65535); }

#define WIDTH 720
void need_width(int width) { XASSERT(width == WIDTH); }

struct Camera {
    static void open(const char* file) { XTHROW("opening file \"%s\": %s", file, "no such file"); }
};

}  // namespace

static_assert(std::is_abstract_v<Xception> && std::has_virtual_destructor_v<Xception>);
static_assert(std::is_base_of_v<Xception, StrXception>);
static_assert(std::is_base_of_v<Xception, AssertXception>);

TEST(StrXception, CarriesTheMessageAndThePlaceWhateverTheyHold) {
    const StrXception e("base/string.cpp", kFunction, 42, "read %d of %s", 3, "stars");
    EXPECT_STREQ(e.message().c_str(),
                 "read 3 of stars in <OSAPI::fd_t OSAPI::connect_tcp(const char*, int)> "
                 "(base/string.cpp:42)");
    const StrXception of_formats("%s.cpp", "void f<%d>()", 7, "%s", "100 %n");
    EXPECT_STREQ(of_formats.message().c_str(), "100 %n in <void f<%d>()> (%s.cpp:7)");
    const std::string text(20000, 'x');
    const StrXception long_one("a.cpp", "void f()", 7, "%s", text.c_str());
    EXPECT_EQ(std::string(long_one.message().c_str()), text + " in <void f()> (a.cpp:7)");
}

TEST(StrXception, WithoutMemoryForTheMessageOrItsPlaceTheFormatterSaysSo) {
    for (const std::size_t length : {2000U, 900U}) {
        const std::string text(length, 'x');
        const std::string function(200, 'f');
        FailingAllocator allocator;
        // Room for the place of the raise; none for the first text, or none for the second with it.
        allocator.refuse_above(1000);
        try {
            throw StrXception("a.cpp", function.c_str(), 7, "%s", text.c_str());
        } catch (const StrXception& e) {
            EXPECT_EQ(std::strncmp(e.message().c_str(), "out of memory in <", 18), 0);
            EXPECT_EQ(std::strstr(e.message().c_str(), "a.cpp"), nullptr);
        }
    }
}

TEST(AssertXception, PrintsTheFirst4095Characters) {
    // "'" + text + "' in <f> (a:1)" is the text and 15 characters.
    for (const std::size_t length : {4079, 4080, 4081, 9000}) {
        const std::string text(length, 'x');
        const AssertXception e(text.c_str(), "a", "f", 1);
        const std::string whole = "'" + text + "' in <f> (a:1)";
        EXPECT_EQ(whole.size(), length + 15);
        EXPECT_EQ(errors_of([&] { e.print(); }),
                  "Assertion Failed: " + whole.substr(0, 4095) + "\n");
    }
}

TEST(Assertion, PassesSilentlyAndLooksOnce) {
    int looked = 0;
    EXPECT_NO_THROW([&] { XASSERT(++looked == 1); }());
    EXPECT_EQ(looked, 1);
}

TEST(Assertion, CarriesItsConditionAsItIsWritten) {
    try {
        need_port(0);
        FAIL();
    } catch (const AssertXception& e) {
        EXPECT_STREQ(e.expression(), "port > 0 && port <= 65535");
        EXPECT_STREQ(e.file(), "tests/base/exceptions_test.cpp");
        EXPECT_NE(std::strstr(e.function(), "need_port(int)"), nullptr) << e.function();
        EXPECT_EQ(std::strncmp(e.function(), "void ", 5), 0) << e.function();
        EXPECT_GT(e.line(), 0);
    }
    try {
        need_width(1);
        FAIL();
    } catch (const AssertXception& e) {
        EXPECT_STREQ(e.expression(), "width == WIDTH");
    }
}

TEST(Assertion, FitsAnUnbracedBranch) {
    const auto check = [](bool wanted, int port) {
        if (wanted)
            XASSERT(port > 0);
        else
            XTHROW("not wanted");
    };
    EXPECT_NO_THROW(check(true, 1));
    EXPECT_THROW(check(true, 0), AssertXception);
    EXPECT_THROW(check(false, 1), StrXception);
}

TEST(Raise, NamesItsOwnPlace) {
    expect_message(thrown_message([] { Camera::open("a.stars"); }),
                   "opening file \"a.stars\": no such file", "Camera::open",
                   "tests/base/exceptions_test.cpp");
}

TEST(Xception, IsTheOneToCatch) {
    const auto printed = [](auto raise) {
        return errors_of([&] {
            try {
                raise();
            } catch (const Xception& e) {
                e.print();
            }
        });
    };
    EXPECT_EQ(printed([] { throw StrXception("a.cpp", "void f()", 7, "no %s", "stars"); }),
              "Error: no stars in <void f()> (a.cpp:7)\n");
    EXPECT_EQ(
        printed([] { throw AssertXception("port > 0 && port <= 65535", "a.cpp", kFunction, 9); }),
        "Assertion Failed: 'port > 0 && port <= 65535' in "
        "<OSAPI::fd_t OSAPI::connect_tcp(const char*, int)> (a.cpp:9)\n");
}

TEST(Xception, CopiesAreWhole) {
    StrXception copy("b.cpp", "void g()", 1, "other");
    {
        const StrXception e("a.cpp", "void f()", 7, "no stars");
        copy = e;
    }
    EXPECT_STREQ(copy.message().c_str(), "no stars in <void f()> (a.cpp:7)");
}

TEST(Diagnostics, AreOneLineEach) {
    EXPECT_EQ(errors_of([] { Xception::display_error("Title", "50% of %s"); }),
              "Title: 50% of %s\n");
    EXPECT_EQ(errors_of([] { Xception::warning("void f<%s>()", "%d of %s", 3, "stars"); }),
              "warning: 3 of stars in <void f<%s>()>\n");
    // An argument nobody asks for is allowed; it keeps the compilers quiet about the empty format.
    const char* nothing = "";
    EXPECT_EQ(errors_of([&] { Xception::warning("void f()", nothing, 0); }),
              "warning:  in <void f()>\n");
}
