// Ideas: a small app for catching thoughts, which shows what the desktop integration does for a host.

#include "examples/brainstorm/App.h"

int main(int argc, char** argv)
{
    int exitCode = 0;
    auto const options = ideas::Options::parse(argc, argv, exitCode);
    if (!options)
        return exitCode;

    // The plug-in reaches windows that go through X, in a Wayland session too.
    gdk_set_allowed_backends("x11");
    if (!gtk_init_check(nullptr, nullptr)) {
        g_printerr("ideas: no display can be reached\n");
        return 1;
    }
    ideas::App app(*options);
    app.run();
    return 0;
}
