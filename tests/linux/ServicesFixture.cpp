#include "tests/linux/ServicesFixture.h"

#include "tests/linux/Pump.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace paneweld_tests {

namespace fs = std::filesystem;

Services::Services()
{
    for (auto const* name : { "DISPLAY", "WAYLAND_DISPLAY", "XDG_SESSION_TYPE", "XDG_CURRENT_DESKTOP",
             "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR", "APPDIR" })
        unsetenv(name);
    setenv("HOME", folder.path().c_str(), 1);
    setenv("PANEWELD_LOG", "info", 1);
    fs::create_directories(folder.path() + "/bin");
    testing::internal::CaptureStderr();
}

Services::~Services() = default;

void Services::open(With with, DialogPortal::Manners const& manners)
{
    if (with != With::NoBus)
        bus = std::make_unique<SessionBus>();
    if (with == With::Portal)
        portal = std::make_unique<DialogPortal>(bus->address(), manners);
    // The bus and the like have been found.
    setenv("PATH", (folder.path() + "/bin").c_str(), 1);
    backends::LinuxOptions options;
    options.bundleIdentifier = "app.test";
    auto made = backends::makeLinuxPlatform(options);
    ASSERT_TRUE(made.hasValue());
    auto owned = made.take();
    backend = owned.get();
    platform::Platform::install(std::move(owned));
}

void Services::makeProgram(std::string const& name, std::string const& script)
{
    auto const path = folder.write("bin/" + name, "#!/bin/sh\n" + script);
    fs::permissions(path, fs::perms::owner_all);
}

std::string Services::read(std::string const& name) const
{
    std::ostringstream text;
    text << std::ifstream(folder.path() + "/" + name).rdbuf();
    return text.str();
}

platform::URL Services::makeFolder(std::string const& name) const
{
    fs::create_directories(folder.path() + "/" + name);
    return platform::URL::fileURL(folder.path() + "/" + name, platform::URL::IsDirectory::Yes);
}

platform::URL Services::makeFile(std::string const& name) const
{
    return platform::URL::fileURL(folder.write(name, "text"), platform::URL::IsDirectory::No);
}

bool Services::pumpUntil(std::function<bool()> const& condition)
{
    if (pump(
            { backend->pollableDescriptor() }, [this] { backend->dispatch(); }, condition))
        return true;
    ADD_FAILURE() << "waited in vain";
    return false;
}

} // namespace paneweld_tests
