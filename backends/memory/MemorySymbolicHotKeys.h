#pragma once

#include "platform/carbon/SymbolicHotKeys.h"

#include <utility>

namespace backends {

// The shortcuts that a memory world's system keeps for itself: whatever was said last, at first none.
class MemorySymbolicHotKeys : public platform::SymbolicHotKeys {
public:
    Copied copySymbolicHotKeys() override { return m_answer; }
    void setAnswer(Copied answer) { m_answer = std::move(answer); }

private:
    Copied m_answer { platform::noErr, platform::List {} };
};

} // namespace backends
