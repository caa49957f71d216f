#pragma once

#include "platform/carbon/HotKeyTruth.h"
#include "platform/dispatch/Queue.h"

#include <functional>
#include <memory>

namespace backends {

// Tells once, on the main queue, that the truth about hot keys is another one: never from inside a registration, and
// not of a state that has passed by then.
class HotKeyTruthTeller {
public:
    HotKeyTruthTeller(
        platform::Queue& mainQueue, std::function<platform::HotKeyTruth()> truth, std::function<void()> tell);

    void truthMayHaveChanged();

private:
    void tellIfChanged();

    platform::Queue& m_mainQueue;
    std::function<platform::HotKeyTruth()> m_truth;
    std::function<void()> m_tell;
    platform::HotKeyTruth m_told;
    bool m_isAboutToTell = false;
    // Ends with this object: what waits on the queue holds it weakly.
    std::shared_ptr<HotKeyTruthTeller*> m_life;
};

} // namespace backends
