#pragma once

#include "backends/linux/Linux.h"
#include "platform/foundation/URL.h"
#include "tests/linux/DialogPortal.h"
#include "tests/linux/SessionBus.h"
#include "tests/support/TemporaryFolder.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace paneweld_tests {

// A backend without a screen, on a bus of its own with a desktop's portal where the test wants one, and with programs
// of the user's in a PATH of their own. What the backend logs is in the captured standard error.
class Services : public ::testing::Test {
protected:
    enum class With { NoBus, Bus, Portal };

    Services();
    ~Services() override;

    void open(With with, DialogPortal::Manners const& manners = {});
    // A program of the shell's language, which the test writes, under a name in PATH.
    void makeProgram(std::string const& name, std::string const& script);
    std::string read(std::string const& name) const;
    platform::URL makeFolder(std::string const& name) const;
    platform::URL makeFile(std::string const& name) const;
    bool pumpUntil(std::function<bool()> const& condition);
    // Up to now; once.
    std::string log() { return testing::internal::GetCapturedStderr(); }

    platform::TemporaryFolder folder;
    std::unique_ptr<SessionBus> bus;
    std::unique_ptr<DialogPortal> portal;
    backends::LinuxPlatform* backend = nullptr;
};

} // namespace paneweld_tests
