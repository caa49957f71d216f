#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

struct sd_bus;
struct sd_bus_message;

namespace paneweld_tests {

// A program of our own at the other end of a test's bus, on a thread of its own, with a name that it owns. What it was
// asked is written down in order.
class BusPeer {
public:
    virtual ~BusPeer();
    BusPeer(BusPeer const&) = delete;
    BusPeer& operator=(BusPeer const&) = delete;

    std::vector<std::string> calls() const;
    // Of those that start so.
    int count(std::string const& call) const;

protected:
    // How the name is taken, as in sd_bus_request_name.
    BusPeer(std::string busAddress, std::string name, std::uint64_t nameFlags = 0);
    // Ends of construction and beginning of destruction of what derives from it. Some leave and come back in between.
    void start();
    void stop();

    // On the peer's thread: 1 when the call was answered.
    virtual int handleCall(sd_bus_message* message) = 0;
    sd_bus* bus() const { return m_bus; }

    void note(std::string const& call);
    void onThread(std::function<void()> work);
    // Guards what both threads touch.
    std::mutex& mutex() const { return m_mutex; }

private:
    void run();

    std::string m_address;
    std::string m_name;
    std::uint64_t m_nameFlags;
    mutable std::mutex m_mutex;
    std::vector<std::string> m_calls;
    std::vector<std::function<void()>> m_work;
    sd_bus* m_bus = nullptr;
    std::atomic<bool> m_isReady = false;
    std::atomic<bool> m_isEnding = false;
    int m_wakeDescriptor;
    std::thread m_thread;
};

} // namespace paneweld_tests
