// What the throwing destructors of all rooms have in common.
#pragma once

#include <base/exceptions.h>

#include <exception>

/// Runs the `release` of a destructor. Its failure is thrown, except while another exception is
/// under way: a second one would end the process, so it is printed and the first one goes on.
template <class Release>
void release_in_destructor(Release release) {
    if (std::uncaught_exceptions() == 0) {
        release();
        return;
    }
    try {
        release();
    } catch (const Xception& failure) {
        failure.print();
    }
}
