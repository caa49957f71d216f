#pragma once

#include "platform/dispatch/Queue.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace backends {

// A line of work with a thread of its own, which starts with the first piece. Destruction waits until what was
// submitted is done, unless it happens on that very thread, which then finishes by itself.
class SerialQueue : public platform::Queue {
public:
    explicit SerialQueue(std::string label);
    ~SerialQueue() override;
    SerialQueue(SerialQueue const&) = delete;
    SerialQueue& operator=(SerialQueue const&) = delete;

    void async(std::function<void()> work) override;

private:
    // Outlives the queue while its thread still runs.
    struct Line {
        std::mutex mutex;
        std::condition_variable changed;
        std::deque<std::function<void()>> work;
        bool isEnding = false;
    };

    void startThread();
    static void run(Line& line);

    std::string m_label;
    std::shared_ptr<Line> m_line;
    std::thread m_thread;
};

} // namespace backends
