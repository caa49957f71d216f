#pragma once

#include "platform/dispatch/Clock.h"

#include <functional>

namespace platform {

// A group of animated changes with one duration and one end. Main thread only.
class NSAnimationContext {
public:
    virtual ~NSAnimationContext() = default;

    // What the changes of a group are made with. 0.25 s and the curve (0.25, 0.1) (0.25, 1.0) unless set.
    class Group {
    public:
        Seconds duration() const { return m_duration; }
        void setDuration(Seconds duration) { m_duration = duration; }

    private:
        Seconds m_duration { 0.25 };
    };

    // Runs the changes, which set new values on windows' animators, and calls the completion on the main thread once
    // all of them have arrived, were replaced (then at their own end) or were ended. With no change made the
    // completion comes when the group ends.
    virtual void runAnimationGroup(std::function<void(Group&)> changes, std::function<void()> completion) = 0;
};

} // namespace platform
