#pragma once

#include "examples/brainstorm/HostWindow.h"

namespace ideas {

// Three short pages for somebody who opens the app for the first time.
class OnboardingWindow : public HostWindow {
public:
    OnboardingWindow(Desktop& desktop, std::function<void()> onFinished);

private:
    GtkWidget* buildControls();
    void show(std::size_t page);

    std::function<void()> m_onFinished;
    std::size_t m_page = 0;
    GtkWidget* m_stack = nullptr;
    GtkWidget* m_dots = nullptr;
    GtkWidget* m_next = nullptr;
};

} // namespace ideas
