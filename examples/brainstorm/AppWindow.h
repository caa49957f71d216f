#pragma once

#include "examples/brainstorm/ActivityView.h"
#include "examples/brainstorm/HostWindow.h"
#include "examples/brainstorm/IdeaList.h"
#include "examples/brainstorm/Library.h"

namespace ideas {

// The main window: the library on the left, one brainstorm on the right, and below it what is going on.
class AppWindow : public HostWindow {
public:
    struct Actions {
        std::function<void()> newBrainstorm;
        std::function<void(std::string const& brainstormID)> openBrainstorm;
        std::function<void()> openSettings;
        std::function<void()> openOnboarding;
    };

    AppWindow(Desktop& desktop, Library& library, Activity& activity, Actions actions);
    ~AppWindow() override;

    // After the library has changed.
    void refresh();
    // One discreet line beside the trace.
    void showStatus(std::string const& status);

private:
    void build();
    GtkWidget* buildSidebar();
    GtkWidget* buildDetail();
    GtkWidget* buildActivity();
    GtkWidget* makeSidebarButton(char const* text, char const* icon, std::function<void()> const& action);
    void select(std::string const& brainstormID);
    void showDetail();

    Library& m_library;
    Activity& m_activity;
    Actions m_actions;
    ActivityView m_trace;
    IdeaList m_ideas;
    std::string m_selected;
    std::string m_newest;
    bool m_isRefreshing = false;
    GtkWidget* m_list = nullptr;
    GtkWidget* m_title = nullptr;
    GtkWidget* m_summary = nullptr;
    GtkWidget* m_continue = nullptr;
    GtkWidget* m_status = nullptr;
};

} // namespace ideas
