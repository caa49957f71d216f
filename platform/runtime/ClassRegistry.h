#pragma once

#include "platform/runtime/Class.h"

#include <map>
#include <string>
#include <vector>

namespace platform {

// The classes of this process by name, each with the module that brought it. Main thread only.
class ClassRegistry {
public:
    static ClassRegistry& shared();

    // The module is the path of its bundle; the description must live as long as the process. A name that is taken
    // stays with whoever came first, for the process as a whole; each module still finds its own.
    void registerClass(std::string const& modulePath, Class const& description);

    // The module's own class of the name, else the process's. Null when there is none.
    Class const* classNamed(std::string const& modulePath, std::string const& name) const;
    // NSClassFromString.
    Class const* classFromString(std::string const& name) const;

private:
    std::map<std::string, std::map<std::string, Class const*>> m_modules;
    std::map<std::string, Class const*> m_process;
};

} // namespace platform
