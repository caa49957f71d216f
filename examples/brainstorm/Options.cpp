#include "examples/brainstorm/Options.h"

#include <algorithm>
#include <array>
#include <iostream>
#include <string_view>

namespace ideas {

namespace {

constexpr std::array<std::string_view, 4> windowNames { "brainstorm", "app", "onboarding", "settings" };

constexpr char const* usage
    = "Usage: ideas [--window brainstorm|app|onboarding|settings] [--transcript FILE] [--no-announce]\n"
      "\n"
      "  --window NAME      open this window only\n"
      "  --transcript FILE  append every notification of the process, one a line\n"
      "  --no-announce      let the plug-in discover windows instead of announcing them\n";

} // namespace

std::optional<Options> Options::parse(int argc, char** argv, int& exitCode)
{
    Options options;
    exitCode = 2;
    for (int index = 1; index < argc; ++index) {
        std::string_view const word = argv[index];
        bool const hasValue = index + 1 < argc;
        if (word == "--help" || word == "-h") {
            std::cout << usage;
            exitCode = 0;
            return std::nullopt;
        }
        if (word == "--no-announce") {
            options.announcesWindows = false;
        } else if (word == "--transcript" && hasValue) {
            options.transcriptPath = argv[++index];
        } else if (word == "--window" && hasValue) {
            options.window = argv[++index];
        } else {
            std::cerr << "ideas: cannot make sense of " << word << '\n' << usage;
            return std::nullopt;
        }
    }
    if (options.window && std::find(windowNames.begin(), windowNames.end(), *options.window) == windowNames.end()) {
        std::cerr << "ideas: there is no window " << *options.window << '\n' << usage;
        return std::nullopt;
    }
    return options;
}

} // namespace ideas
