#pragma once

#include "backends/linux/loop/EventLoop.h"
#include "platform/foundation/Result.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace backends {

// A program of the user's system at work beside us, with the user's environment. It is waited for by a descriptor of
// its own, because the signal of children that end is the host's, and leaves no zombie. It goes on when the object
// goes. Main thread only.
class ChildProgram {
public:
    // How it ended: the exit code, or the negative of the signal that ended it; 0 as well when a host that waits for
    // all children has taken that.
    struct End {
        int status = 0;
        std::string output {};
    };
    enum class Output { Ignored, Kept };

    // The first argument is the program, looked up in PATH. Fails when it cannot be started, with the number of the
    // cause (errno(3)). The end is told once, from the loop; the object may go then.
    static platform::Result<std::unique_ptr<ChildProgram>> start(
        EventLoop& loop, std::vector<std::string> arguments, Output output, std::function<void(End const&)> ended);
    ~ChildProgram();
    ChildProgram(ChildProgram const&) = delete;
    ChildProgram& operator=(ChildProgram const&) = delete;

private:
    ChildProgram(EventLoop& loop, std::function<void(End const&)> ended);

    int spawn(std::vector<std::string>& arguments, Output output);
    void readOutput();
    void mayHaveEnded();

    EventLoop& m_loop;
    std::function<void(End const&)> m_ended;
    int m_process = -1;
    int m_processDescriptor = -1;
    int m_outputDescriptor = -1;
    std::string m_output;
    LoopSource m_processSource;
    LoopSource m_outputSource;
};

} // namespace backends
