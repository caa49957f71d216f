#pragma once

#include "platform/appkit/NSAnimationContext.h"
#include "platform/appkit/NSWindow.h"
#include "platform/dispatch/Clock.h"
#include "platform/dispatch/Queue.h"
#include "platform/foundation/Geometry.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace backends {

// What the animator moves: a window of some backend. The steps come in the order of time, the last one is the target
// itself.
class AnimatedWindow {
public:
    virtual ~AnimatedWindow() = default;

    virtual platform::Rect animatedFrame() const = 0;
    virtual double animatedAlpha() const = 0;
    virtual void applyAnimatedFrame(platform::Rect const& frame) = 0;
    virtual void applyAnimatedAlpha(double alpha) = 0;
};

// The steps of frame and alpha animations in time, for every window system. A new animation of the same property
// takes over from the value reached; the one that it replaces drives nothing more, and its group completes at its own
// end. While nothing moves the ticker stands still.
class Animator : public platform::NSAnimationContext {
public:
    Animator(platform::Clock& clock, platform::FrameTicker& ticker, platform::Queue& mainQueue);
    ~Animator() override;

    void runAnimationGroup(std::function<void(Group&)> changes, std::function<void()> completion) override;

    // The road on which a window's changes join the group that is being made. Outside a group a change makes one of
    // its own.
    std::unique_ptr<platform::NSWindowAnimator> makeWindowAnimator(std::weak_ptr<AnimatedWindow> window);

    // The frame was set plainly: a running frame animation ends where it is, its completion comes on the next turn.
    void endFrameAnimations(AnimatedWindow const& window);
    // The window has gone: everything of it ends, completions come on the next turn.
    void endAnimations(AnimatedWindow const& window);

    // Where a running frame animation of the window is going to. Absent while none drives it.
    std::optional<platform::Rect> targetFrame(AnimatedWindow const& window) const;

private:
    class WindowAnimator;
    struct OpenGroup;
    struct Animation;

    void add(std::shared_ptr<Animation> animation);
    void tick();
    void end(AnimatedWindow const& window, bool framesOnly);

    platform::Clock& m_clock;
    platform::FrameTicker& m_ticker;
    platform::Queue& m_mainQueue;
    std::vector<std::shared_ptr<Animation>> m_animations;
    OpenGroup* m_openGroup = nullptr;
    bool m_isTicking = false;
};

// The value of the curve with the control points (0.25, 0.1) and (0.25, 1.0) at a share of the time from 0 to 1.
double defaultTimingCurve(double progress);

} // namespace backends
