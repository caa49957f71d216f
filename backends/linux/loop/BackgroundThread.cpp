#include "backends/linux/loop/BackgroundThread.h"

#include <csignal>
#include <pthread.h>
#include <utility>

namespace backends {

namespace {

constexpr std::size_t maximumThreadName = 15;

} // namespace

std::thread startBackgroundThread(std::string const& name, std::function<void()> work)
{
    // A thread inherits the mask, so all are blocked while it is made.
    sigset_t all {};
    sigset_t before {};
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    std::thread thread(std::move(work));
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    pthread_setname_np(thread.native_handle(), name.substr(0, maximumThreadName).c_str());
    return thread;
}

} // namespace backends
