#pragma once

#include "platform/foundation/Notification.h"

#include <deque>
#include <fstream>
#include <functional>
#include <string>

namespace ideas {

// The trace of what app, plug-in and window system told each other, for the window that shows it and for a file.
class Activity {
public:
    enum class Origin { App, Plugin, WindowSystem };

    struct Entry {
        double time = 0; // seconds since the app started
        Origin origin = Origin::App;
        std::string name; // without its "Paneweld."
        std::string details;
    };

    Activity();

    // From now on every notification becomes a line at the end of the file: time, name, and what it carries, sorted by
    // key. False when the file cannot be written.
    bool writeTo(std::string const& path);

    void hear(platform::Notification const& notification);

    // The most recent ones, oldest first.
    std::deque<Entry> const& entries() const { return m_entries; }
    void onEntry(std::function<void(Entry const&)> listener) { m_listener = std::move(listener); }

private:
    long long m_start;
    std::ofstream m_file;
    std::deque<Entry> m_entries;
    std::function<void(Entry const&)> m_listener;
};

} // namespace ideas
