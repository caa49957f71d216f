#pragma once

#include "backends/linux/host/StandardErrorLog.h"
#include "backends/linux/loop/EventLoop.h"
#include "backends/linux/x11/Connection.h"
#include "tests/linux/Desktop.h"

#include <gtest/gtest.h>
#include <memory>

namespace paneweld_tests {

// A connection to a bare X server, and nothing that listens to it.
class ConnectionFixture : public testing::Test {
protected:
    ConnectionFixture()
        : loop(backends::EventLoop::create().take())
        , connection(backends::Connection::open(desktop.display(), *loop, { log, "test", "x11" }).take())
    {
        connection->start([](auto const&) {}, [] {});
    }

    Desktop desktop;
    backends::StandardErrorLog log;
    std::unique_ptr<backends::EventLoop> loop;
    std::unique_ptr<backends::Connection> connection;
};

} // namespace paneweld_tests
