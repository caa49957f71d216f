#pragma once

#include "backends/linux/host/OutputPipe.h"
#include "backends/linux/host/UserProcess.h"
#include "backends/linux/loop/EventLoop.h"
#include "platform/foundation/Result.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace backends {

// A program of the user's at work beside us, whose end the loop tells. It goes on when the object goes. Main thread
// only.
class ChildProgram {
public:
    struct End {
        // As UserProcess::end tells it.
        int status = 0;
        std::string output {};
    };
    enum class Output { Ignored, Kept };
    using Ended = std::function<void(End const&)>;

    // Fails when it cannot be started, with the number of the cause (errno(3)). The end is told once, from the loop;
    // the object may go then.
    static platform::Result<std::unique_ptr<ChildProgram>> start(
        EventLoop& loop, std::vector<std::string> arguments, Output output, Ended ended);
    // The same for one that was started already.
    static std::unique_ptr<ChildProgram> watch(EventLoop& loop, UserProcess process, Ended ended);
    ChildProgram(ChildProgram const&) = delete;
    ChildProgram& operator=(ChildProgram const&) = delete;

private:
    ChildProgram(EventLoop& loop, UserProcess process, std::unique_ptr<OutputPipe> output, Ended ended);

    void readOutput();
    void mayHaveEnded();

    Ended m_ended;
    UserProcess m_process;
    std::unique_ptr<OutputPipe> m_output;
    // They end before what they wait for is closed.
    LoopSource m_processSource;
    LoopSource m_outputSource;
};

} // namespace backends
