#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace platform {

// A line of work. What is submitted runs in order, each piece by itself.
class Queue {
public:
    virtual ~Queue() = default;

    // From any thread; never runs the work inside the call.
    virtual void async(std::function<void()> work) = 0;

    // A mark that code running on this queue can recognise it by. The key's address is what counts.
    void setSpecific(void const* key, std::shared_ptr<void> value);
    // The value that the queue which runs the caller has under the key, or null.
    static std::shared_ptr<void> currentSpecific(void const* key);

    // Makes the queue the current one of this thread for as long as it lives: around a piece of work, and for the
    // main queue around everything that the main thread does.
    class Entry {
    public:
        explicit Entry(Queue& queue);
        ~Entry();
        Entry(Entry const&) = delete;
        Entry& operator=(Entry const&) = delete;

    private:
        Queue* m_outer;
    };

private:
    std::mutex m_mutex;
    std::map<void const*, std::shared_ptr<void>> m_specifics;
};

} // namespace platform
