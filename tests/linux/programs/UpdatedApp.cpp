#include "paneweld/host.hpp"

#include "platform/foundation/Bundle.h"
#include "platform/runtime/Class.h"

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <unistd.h>

// A small app without windows that updates itself: UpdatedApp FRAMEWORK REPORT WORD. Its version is the text of the
// file "version" beside it. Writes a line to the report when it has started and one when it ends, and looks for an
// update at once.

namespace {

std::string version()
{
    std::string text;
    std::ifstream(std::filesystem::read_symlink("/proc/self/exe").parent_path() / "version") >> text;
    return text;
}

void report(char const* path, std::string const& line) { std::ofstream(path, std::ios::app) << line + "\n"; }

} // namespace

int main(int argc, char** argv)
{
    // Whoever started it may be gone before it is told to end.
    constexpr unsigned longestLife = 60;
    alarm(longestLife);
    if (argc != 4)
        return 2;
    auto const own = version();
    auto started = paneweld::Host::start({ .frameworkPath = argv[1], .appName = "Ideas" });
    if (!started)
        return 1;
    auto const host = started.take();
    auto const updater = paneweld::NSBundle::updateController(*host->plugin());
    if (!updater)
        return 1;
    host->setTerminateHandler([&] { host->stop(); });
    platform::perform(*updater, "startUpdater");
    platform::perform(*updater, "checkForUpdates");
    report(argv[2], "started " + own + " " + std::to_string(getpid()) + " " + argv[3]);
    host->run();
    report(argv[2], "ended " + own);
    return 0;
}
