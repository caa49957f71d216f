#pragma once

#include <string_view>

namespace platform {

// The main thread is the one that installed the Platform. Before that every thread counts as main, so that a host
// may prepare its observers early.
void adoptMainThread();
bool isMainThread();

// Fatal, naming the place, on any other thread and in every build type.
void assertMainThread(std::string_view where);

} // namespace platform
