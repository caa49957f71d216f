#pragma once

#include <functional>

namespace platform {

enum class WindowButton { Close = 0, Miniaturize = 1, Zoom = 2 };

// One of the standard buttons in a window's title bar.
class NSButton {
public:
    explicit NSButton(std::function<void()> didChange = {})
        : m_didChange(std::move(didChange))
    {
    }

    bool isHidden() const { return m_isHidden; }
    void setHidden(bool isHidden)
    {
        if (m_isHidden == isHidden)
            return;
        m_isHidden = isHidden;
        if (m_didChange)
            m_didChange();
    }

private:
    bool m_isHidden = false;
    std::function<void()> m_didChange;
};

} // namespace platform
