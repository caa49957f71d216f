#pragma once

#include "platform/foundation/NotificationCenter.h"

#include <string>
#include <vector>

// Everything that happened, one line each, to be compared with a file: what the world was told, what host and plug-in
// said to each other, and what was logged.
class Transcript {
public:
    void add(double seconds, std::string const& line);
    // Without a time, for flows whose order alone counts.
    void addLine(std::string const& line) { m_lines.push_back(line); }
    void addMark(std::string const& text) { m_lines.push_back("-- " + text); }

    std::string text() const;

    // Fails with both texts when the file says otherwise. PANEWELD_ACCEPT=1 writes the file instead.
    void expectToBe(std::string const& name) const;

    static std::string describe(platform::Notification const& notification);

private:
    std::vector<std::string> m_lines;
};
