#pragma once

#include "platform/foundation/Locale.h"
#include "tests/support/TemporaryFolder.h"

#include <cstdlib>
#include <map>
#include <stdexcept>
#include <string>

// The C library forgets to free its copy of LOCPATH at each newlocale(), some bytes that a leak checker would find.
extern "C" [[gnu::used]] inline char const* __lsan_default_suppressions() { return "leak:argz_add_sep"; }

namespace platform {

// Locales for tests, compiled from the system's sources into a folder of the test's own. Nothing has to be installed,
// and what is installed is not seen.
class CompiledLocales {
public:
    CompiledLocales() { setenv("LOCPATH", m_folder.path().c_str(), 1); }
    ~CompiledLocales() { unsetenv("LOCPATH"); }

    // "de_DE", compiled at the first demand.
    Locale named(std::string const& language)
    {
        compile(language);
        auto locale = Locale::named(language + ".UTF-8");
        if (!locale)
            throw std::runtime_error("cannot open the locale " + language);
        return *locale;
    }

    void compile(std::string const& language)
    {
        auto const target = m_folder.path() + "/" + language + ".UTF-8";
        if (std::filesystem::exists(target))
            return;
        // localedef complains about harmless things with status 1; what counts is whether the locale opens.
        auto const command = "localedef --quiet --no-archive -i " + language + " -f UTF-8 '" + target + "'";
        if (std::system(command.c_str()) == -1)
            throw std::runtime_error("cannot run: " + command);
    }

private:
    TemporaryFolder m_folder;
};

} // namespace platform
