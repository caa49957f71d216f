#include "backends/shared/HotKeyTruthTeller.h"

#include <utility>

namespace backends {

HotKeyTruthTeller::HotKeyTruthTeller(
    platform::Queue& mainQueue, std::function<platform::HotKeyTruth()> truth, std::function<void()> tell)
    : m_mainQueue(mainQueue)
    , m_truth(std::move(truth))
    , m_tell(std::move(tell))
    , m_told(m_truth())
    , m_life(std::make_shared<HotKeyTruthTeller*>(this))
{
}

void HotKeyTruthTeller::truthMayHaveChanged()
{
    if (m_truth() == m_told || std::exchange(m_isAboutToTell, true))
        return;
    m_mainQueue.async([life = std::weak_ptr(m_life)] {
        if (auto const self = life.lock())
            (*self)->tellIfChanged();
    });
}

void HotKeyTruthTeller::tellIfChanged()
{
    m_isAboutToTell = false;
    auto const before = std::exchange(m_told, m_truth());
    if (before != m_told)
        m_tell();
}

} // namespace backends
