#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

namespace paneweld_tests {

// A program that a test starts. It ends with the test in any case, and it is ended by its number alone.
class ChildProcess {
public:
    ChildProcess() = default;
    // What the program has instead of nothing as its own input and output.
    struct Streams {
        int input = -1;
        int output = -1;
    };
    // A descriptor of ours to leave open in the program, or -1.
    explicit ChildProcess(
        std::vector<std::string> const& arguments, int keptDescriptor = -1, Streams const& streams = { -1, -1 });
    ~ChildProcess();
    ChildProcess(ChildProcess&&) noexcept;
    ChildProcess& operator=(ChildProcess&&) noexcept;

    bool isRunning();
    pid_t id() const { return m_id; }
    // Waits until it has gone.
    void end(int signal);

private:
    pid_t m_id = -1;
};

} // namespace paneweld_tests
