#pragma once

#include "platform/foundation/Result.h"

#include <string>

namespace backends {

// A library of this machine that is loaded when a feature first needs it, so that a host which never uses the feature
// never carries it. Once loaded it stays: such libraries keep types and threads of their own. Any thread.
class LateLibrary {
public:
    // By the name that the loader knows it by ("libpango-1.0.so.0"). The error has the loader's words.
    static platform::Result<LateLibrary> load(std::string const& name);

    // Looks a function up, there and in what the library itself needs. The pointer's type is the one that the library's
    // header declares; false when there is no such function.
    template<typename Function>
    bool find(char const* name, Function*& function) const
    {
        function = reinterpret_cast<Function*>(address(name));
        return function != nullptr;
    }

private:
    explicit LateLibrary(void* handle)
        : m_handle(handle)
    {
    }
    void* address(char const* name) const;

    void* m_handle;
};

} // namespace backends
