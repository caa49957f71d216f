#pragma once

// The keyboard extension's C header for C++. It names a field "explicit", which C++ keeps for itself, and compilers
// rightly warn of redefining such a word, so this counts as a header of the system.
#pragma GCC system_header

#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit
