#include "backends/shared/Animator.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace backends {

using platform::Display;
using platform::Rect;
using platform::Seconds;

namespace {

// One completion for all animations of a group: it is called when the last holder lets go.
class Completion {
public:
    explicit Completion(std::function<void()> call)
        : m_call(std::move(call))
    {
    }

    void retain() { ++m_pending; }
    void release()
    {
        if (--m_pending > 0)
            return;
        if (auto const call = std::exchange(m_call, nullptr))
            call();
    }

private:
    int m_pending = 0;
    std::function<void()> m_call;
};

double between(double from, double to, double share) { return from + (to - from) * share; }

} // namespace

struct Animator::OpenGroup {
    Group group;
    std::shared_ptr<Completion> completion;
    std::vector<std::shared_ptr<Animation>> animations {};
};

struct Animator::Animation {
    std::weak_ptr<AnimatedWindow> window;
    AnimatedWindow const* identity = nullptr;
    // Exactly one of the two is a target.
    std::optional<Rect> frame {};
    std::optional<double> alpha {};
    Rect fromFrame {};
    double fromAlpha = 0;
    Seconds start {};
    Seconds duration {};
    std::shared_ptr<Completion> completion {};
    bool isDriving = true;
    bool hasEnded = false;

    bool changesSameAs(Animation const& other) const
    {
        return identity == other.identity && frame.has_value() == other.frame.has_value();
    }

    void apply(double progress) const
    {
        auto const target = window.lock();
        if (!isDriving || !target)
            return;
        // The last step is the target itself, not a number near it.
        auto const share = defaultTimingCurve(progress);
        if (alpha) {
            target->applyAnimatedAlpha(progress >= 1 ? *alpha : between(fromAlpha, *alpha, share));
            return;
        }
        target->applyAnimatedFrame(progress >= 1
                ? *frame
                : Rect { between(fromFrame.x, frame->x, share), between(fromFrame.y, frame->y, share),
                    between(fromFrame.width, frame->width, share), between(fromFrame.height, frame->height, share) });
    }
};

class Animator::WindowAnimator : public platform::NSWindowAnimator {
public:
    WindowAnimator(Animator& animator, std::weak_ptr<AnimatedWindow> window)
        : m_animator(animator)
        , m_window(std::move(window))
    {
    }

    void setFrame(Rect const& frame, Display) override
    {
        change([&](Animation& animation) { animation.frame = frame; });
    }

    void setAlphaValue(double alpha) override
    {
        change([&](Animation& animation) { animation.alpha = alpha; });
    }

private:
    template<typename SetTarget>
    void change(SetTarget setTarget)
    {
        auto const window = m_window.lock();
        if (!window)
            return;
        if (!m_animator.m_openGroup) {
            m_animator.runAnimationGroup([&](Group&) { change(setTarget); }, {});
            return;
        }
        auto animation = std::make_shared<Animation>();
        animation->window = m_window;
        animation->identity = window.get();
        setTarget(*animation);
        m_animator.m_openGroup->animations.push_back(std::move(animation));
    }

    Animator& m_animator;
    std::weak_ptr<AnimatedWindow> m_window;
};

Animator::Animator(platform::Clock& clock, platform::FrameTicker& ticker, platform::Queue& mainQueue)
    : m_clock(clock)
    , m_ticker(ticker)
    , m_mainQueue(mainQueue)
{
}

Animator::~Animator() = default;

std::unique_ptr<platform::NSWindowAnimator> Animator::makeWindowAnimator(std::weak_ptr<AnimatedWindow> window)
{
    return std::make_unique<WindowAnimator>(*this, std::move(window));
}

void Animator::runAnimationGroup(std::function<void(Group&)> changes, std::function<void()> completion)
{
    OpenGroup open { {}, std::make_shared<Completion>(std::move(completion)) };
    auto* const outer = std::exchange(m_openGroup, &open);
    changes(open.group);
    m_openGroup = outer;

    auto const duration = open.group.duration();
    // Held by this call too, so that a group without changes completes here and none completes before it is made.
    open.completion->retain();
    for (auto& animation : open.animations) {
        animation->start = m_clock.now();
        animation->duration = std::isfinite(duration.count()) ? std::max(duration, Seconds {}) : Seconds {};
        animation->completion = open.completion;
        open.completion->retain();
        add(std::move(animation));
    }
    open.completion->release();
}

void Animator::add(std::shared_ptr<Animation> animation)
{
    auto const window = animation->window.lock();
    animation->fromFrame = window->animatedFrame();
    animation->fromAlpha = window->animatedAlpha();
    for (auto const& running : m_animations) {
        if (running->changesSameAs(*animation))
            running->isDriving = false;
    }
    if (animation->duration <= Seconds {}) {
        animation->apply(1);
        m_mainQueue.async([completion = animation->completion] { completion->release(); });
        return;
    }
    m_animations.push_back(std::move(animation));
    if (std::exchange(m_isTicking, true))
        return;
    m_ticker.start([this] { tick(); });
}

void Animator::tick()
{
    auto const now = m_clock.now();
    auto const snapshot = m_animations;
    for (auto const& animation : snapshot) {
        if (animation->hasEnded)
            continue;
        // A clock that counts in doubles may arrive a hair early.
        auto const progress = (now - animation->start) / animation->duration + 1e-9;
        animation->apply(std::min(progress, 1.0));
        if (progress < 1 || animation->hasEnded)
            continue;
        animation->hasEnded = true;
        std::erase(m_animations, animation);
        animation->completion->release();
    }
    if (m_animations.empty() && std::exchange(m_isTicking, false))
        m_ticker.stop();
}

void Animator::endFrameAnimations(AnimatedWindow const& window) { end(window, true); }

void Animator::endAnimations(AnimatedWindow const& window) { end(window, false); }

void Animator::end(AnimatedWindow const& window, bool framesOnly)
{
    std::erase_if(m_animations, [&](auto const& animation) {
        if (animation->identity != &window || (framesOnly && !animation->frame))
            return false;
        animation->hasEnded = true;
        m_mainQueue.async([completion = animation->completion] { completion->release(); });
        return true;
    });
    if (m_animations.empty() && std::exchange(m_isTicking, false))
        m_ticker.stop();
}

std::optional<Rect> Animator::targetFrame(AnimatedWindow const& window) const
{
    for (auto const& animation : m_animations) {
        if (animation->identity == &window && animation->isDriving && animation->frame)
            return animation->frame;
    }
    return std::nullopt;
}

double defaultTimingCurve(double progress)
{
    if (progress <= 0)
        return 0;
    if (progress >= 1)
        return 1;
    auto const bezier = [](double first, double second, double t) {
        auto const u = 1 - t;
        return 3 * u * u * t * first + 3 * u * t * t * second + t * t * t;
    };
    // x(t) grows with t, so halving finds the t that belongs to the time.
    double low = 0;
    double high = 1;
    for (int i = 0; i < 40; ++i) {
        auto const middle = (low + high) / 2;
        (bezier(0.25, 0.25, middle) < progress ? low : high) = middle;
    }
    return bezier(0.1, 1.0, (low + high) / 2);
}

} // namespace backends
