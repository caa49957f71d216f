#pragma once

#include "backends/linux/host/Descriptor.h"
#include "platform/foundation/Result.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace backends {

// A program of the user's that we have started: found in the user's PATH, with the user's environment, without the
// host's terminal, and with signals that do what they usually do. It is waited for by a descriptor of its own, because
// the signal of children that end is the host's. It goes on when the object goes. Any thread, one at a time.
class UserProcess {
public:
    // Where it writes; -1 is where the host does.
    struct Streams {
        int output = -1;
        int complaint = -1;
    };
    // A group of its own can be killed with everything that the program has started.
    enum class Group { Hosts, Own };

    // The first argument is the program; with a slash in it it is a path. Fails when it cannot be started, with the
    // number of the cause (errno(3)).
    static platform::Result<UserProcess> start(
        std::vector<std::string> arguments, Streams streams, Group group = Group::Hosts);

    // Readable when it has ended. -1 when it had before anybody could look, in a host that ignores its children.
    int descriptor() const { return m_ended.number(); }
    // The exit code, or the negative of the signal that ended it; 0 as well when a host that waits for all children has
    // taken that. Absent while it runs. Once it is there no zombie is left.
    std::optional<int> end();
    // As above, and absent at the deadline. Blocks.
    std::optional<int> waitUntil(std::chrono::steady_clock::time_point deadline);
    // With its group, when that is its own. Waits until it has gone.
    void kill();

private:
    UserProcess(int process, Group group)
        : m_process(process)
        , m_group(group)
    {
    }

    int m_process;
    Group m_group;
    Descriptor m_ended;
    std::optional<int> m_end;
};

// Of a program that did not end well: "exit code 3", "signal 9".
std::string wordsForEnd(int end);

// In milliseconds, as poll(2) takes it; no more than a minute.
int pollTimeUntil(std::chrono::steady_clock::time_point deadline);

} // namespace backends
