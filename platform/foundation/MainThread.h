#pragma once

#include <atomic>
#include <string_view>

namespace platform {

// The main thread is the one that installed the Platform. Before that every thread counts as main, so that a host
// may prepare its observers early.
void adoptMainThread();

// Which adoption was the latest, and which one was this thread's; 0 is none. Kept only for the question below, which
// is asked at every post and so is answered without a call: the thread's own number lies at a fixed place, where no
// look-up is needed also in a library that is loaded late.
extern std::atomic<unsigned> latestAdoption;
[[gnu::tls_model("initial-exec")]] extern constinit thread_local unsigned adoptionOfThisThread;

inline bool isMainThread() { return adoptionOfThisThread == latestAdoption.load(std::memory_order_relaxed); }

// Fatal, naming the place, on any other thread and in every build type.
void assertMainThread(std::string_view where);

} // namespace platform
