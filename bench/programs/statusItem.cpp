#include <cstdio>
#include <paneweld/host.hpp>

// A host app with the plug-in and nothing else, for the benchmark of its start. The one argument is where the plug-in
// is.
int main(int, char** argv)
{
    paneweld::HostOptions options;
    options.bundleIdentifier = "app.bench";
    options.frameworkPath = argv[1];
    auto started = paneweld::Host::start(options);
    if (!started) {
        std::fprintf(stderr, "%s\n", started.error().localizedDescription.c_str());
        return 1;
    }
    auto const host = started.take();
    auto const plugin = host->plugin();
    auto const controller = plugin ? paneweld::NSBundle::appKitController(*plugin) : nullptr;
    if (!controller)
        return 1;
    host->run();
}
