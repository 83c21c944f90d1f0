// The system's own header, without what is not used of it.
#pragma once

#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX  // the compiler's library may have said so
#define NOMINMAX
#endif
#include <windows.h>
