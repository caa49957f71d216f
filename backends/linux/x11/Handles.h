#pragma once

#include <cstdlib>
#include <memory>

namespace backends {

struct FreeMemory {
    void operator()(void* memory) const { std::free(memory); }
};

// A reply, an error or an event of the X server: memory that the client library allocated and the reader frees.
template<typename T>
using XHandle = std::unique_ptr<T, FreeMemory>;

} // namespace backends
