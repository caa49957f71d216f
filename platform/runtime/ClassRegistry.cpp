#include "platform/runtime/ClassRegistry.h"

#include "platform/foundation/MainThread.h"

namespace platform {

ClassRegistry& ClassRegistry::shared()
{
    // Never destroyed: modules stay loaded for the life of the process.
    static auto* const registry = new ClassRegistry;
    return *registry;
}

void ClassRegistry::registerClass(std::string const& modulePath, Class const& description)
{
    assertMainThread("ClassRegistry.registerClass");
    m_modules[modulePath].emplace(description.name, &description);
    m_process.emplace(description.name, &description);
}

Class const* ClassRegistry::classNamed(std::string const& modulePath, std::string const& name) const
{
    assertMainThread("ClassRegistry.classNamed");
    if (auto const module = m_modules.find(modulePath); module != m_modules.end()) {
        if (auto const found = module->second.find(name); found != module->second.end())
            return found->second;
    }
    return classFromString(name);
}

Class const* ClassRegistry::classFromString(std::string const& name) const
{
    assertMainThread("ClassRegistry.classFromString");
    auto const found = m_process.find(name);
    return found == m_process.end() ? nullptr : found->second;
}

} // namespace platform
