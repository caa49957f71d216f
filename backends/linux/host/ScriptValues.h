#pragma once

#include "platform/applescript/NSAppleEventDescriptor.h"

struct lua_State;

namespace backends {

struct LuaLibrary;

// Pushes one value: a text byte for byte, a number of its kind, a boolean, a list as a sequence, nil for all else. May
// raise an error of memory, so the caller is protected and holds nothing that needs a destructor.
void pushDescriptor(LuaLibrary const& lua, lua_State* state, platform::NSAppleEventDescriptor const& descriptor);

// Reads the value at a place of the stack and raises nothing. Integers beyond 32 bits become their text, sequences
// lists; what cannot leave a script is null.
platform::NSAppleEventDescriptor readDescriptor(LuaLibrary const& lua, lua_State* state, int place);

} // namespace backends
