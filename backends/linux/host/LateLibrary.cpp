#include "backends/linux/host/LateLibrary.h"

#include <dlfcn.h>

namespace backends {

platform::Result<LateLibrary> LateLibrary::load(std::string const& name)
{
    // Its symbols are nobody else's business: the host may have another version of the same names.
    void* const handle = dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (!handle) {
        auto const* const words = dlerror();
        return platform::NSError { "Loader", 1, words ? words : "cannot load " + name };
    }
    return LateLibrary(handle);
}

void* LateLibrary::address(char const* name) const { return dlsym(m_handle, name); }

} // namespace backends
