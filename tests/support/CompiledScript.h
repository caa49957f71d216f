#pragma once

#include "backends/linux/host/FileSystem.h"
#include "backends/linux/host/ProgramOutput.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

// A script as the build compiles it: the bytes of its file.
inline std::string compiledScript(std::string const& source)
{
    platform::TemporaryFolder const folder;
    auto const file = folder.path() + "/script.scpt";
    auto const compiled
        = backends::outputOfProgram({ PANEWELD_TEST_SCRIPT_COMPILER, folder.write("script.lua", source), file },
            std::chrono::steady_clock::now() + std::chrono::seconds(30));
    EXPECT_TRUE(compiled.hasValue()) << compiled.error().localizedDescription;
    return backends::readFile(file).value();
}
