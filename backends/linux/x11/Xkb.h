#pragma once

// The keyboard extension's C header names a field "explicit", which C++ keeps for itself.
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit
