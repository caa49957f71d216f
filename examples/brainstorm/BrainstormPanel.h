#pragma once

#include "examples/brainstorm/HostWindow.h"
#include "examples/brainstorm/IdeaList.h"
#include "examples/brainstorm/Library.h"
#include "examples/brainstorm/Settings.h"

#include <optional>

namespace ideas {

// The floating strip in which a brainstorm happens. It grows upward with its ideas: the entry stays where it is, at
// the bottom, and the list above is uncovered from below while the plug-in moves the frame.
class BrainstormPanel : public HostWindow {
public:
    BrainstormPanel(Desktop& desktop, Settings& settings, Library& library, std::string brainstormID);
    ~BrainstormPanel() override;

    std::string const& brainstormID() const { return m_brainstormID; }
    // Below those that are there.
    void addIdeas(std::vector<std::string> const& ideas);
    void onSettings(std::function<void()> handler) { m_onSettings = std::move(handler); }
    // Hears one short line about the panel's size at each of its changes.
    void onStatus(std::function<void(std::string const&)> handler) { m_onStatus = std::move(handler); }
    void onNewPanel(std::function<void()> handler) { addShortcut(GDK_KEY_n, std::move(handler)); }

private:
    void build();
    GtkWidget* buildList();
    GtkWidget* buildEntry();
    GtkWidget* buildStrip();
    void connectWindow();

    void addTypedIdea();
    void removeIdea(std::size_t index);
    void showIdeas();
    // Tells the plug-in which height the content wants.
    void requestHeight(bool isAnimated);
    double contentHeight() const;
    double maximumHeight() const;

    void didAppear() override;
    void willResize(paneweld::BrainstormWindowResize const& resize) override;
    void didResize(paneweld::BrainstormWindowResize const& resize) override;
    void didEndLiveResize(paneweld::BrainstormWindowDidEndLiveResize const& resize) override;
    void tellStatus(std::string const& status) const;

    Settings& m_settings;
    Library& m_library;
    std::string m_brainstormID;
    std::function<void()> m_onSettings;
    std::function<void(std::string const&)> m_onStatus;
    IdeaList m_ideas;
    // Between will-resize and did-resize.
    std::optional<PaintsWithNews> m_onItsWay;
    GtkWidget* m_panel = nullptr;
    GtkWidget* m_scroller = nullptr;
    GtkWidget* m_entry = nullptr;
    GtkWidget* m_pin = nullptr;
};

} // namespace ideas
