#include "examples/brainstorm/BrainstormPanel.h"

#include <algorithm>
#include <cmath>

namespace ideas {

namespace {

constexpr int stripWidth = 640;
constexpr int stripHeight = 91;
// Room between the panel and the edges of the usable screen: below it, and above it at its highest.
constexpr double screenMargins = 84 + 24;

std::string inPoints(double length) { return std::to_string(std::lround(length)) + " points"; }

void stickToBottom(GtkAdjustment* adjustment)
{
    gtk_adjustment_set_value(
        adjustment, gtk_adjustment_get_upper(adjustment) - gtk_adjustment_get_page_size(adjustment));
}

} // namespace

BrainstormPanel::BrainstormPanel(Desktop& desktop, Settings& settings, Library& library, std::string brainstormID)
    : HostWindow(desktop, paneweld::WindowIdentifier::brainstorm("brainstorm-" + brainstormID, "Brainstorm"))
    , m_settings(settings)
    , m_library(library)
    , m_brainstormID(std::move(brainstormID))
    , m_ideas([this](std::size_t index) { removeIdea(index); })
{
    build();
    connectWindow();
    showIdeas();
}

BrainstormPanel::~BrainstormPanel()
{
    desktop().setComposing(false);
    m_library.forgetIfEmpty(m_brainstormID);
}

void BrainstormPanel::build()
{
    auto* const window = GTK_WINDOW(widget());
    gtk_window_set_decorated(window, FALSE);
    gtk_window_set_default_size(window, stripWidth, stripHeight);
    gtk_widget_set_app_paintable(widget(), TRUE);
    addClass(widget(), "panel-window");

    // The corners are see-through where a compositor draws them so; elsewhere they would be black.
    auto* const screen = gtk_widget_get_screen(widget());
    auto* const visual = gdk_screen_get_rgba_visual(screen);
    if (visual)
        gtk_widget_set_visual(widget(), visual);

    m_panel = makeBox(GTK_ORIENTATION_VERTICAL, 0, "panel");
    setClass(m_panel, "square", !visual || !gdk_screen_is_composited(screen));
    gtk_box_pack_start(GTK_BOX(m_panel), buildList(), TRUE, TRUE, 0);
    gtk_box_pack_end(GTK_BOX(m_panel), buildStrip(), FALSE, FALSE, 0);
    gtk_container_add(GTK_CONTAINER(window), m_panel);
    gtk_widget_show_all(m_panel);
}

GtkWidget* BrainstormPanel::buildList()
{
    m_scroller = gtk_scrolled_window_new(nullptr, nullptr);
    auto* const scroller = GTK_SCROLLED_WINDOW(m_scroller);
    // No bar and no minimum: while the frame is on its way the list shows as much as there is room for.
    gtk_scrolled_window_set_policy(scroller, GTK_POLICY_NEVER, GTK_POLICY_EXTERNAL);
    gtk_scrolled_window_set_propagate_natural_height(scroller, TRUE);
    gtk_scrolled_window_set_min_content_height(scroller, 0);
    connect<void()>(gtk_scrolled_window_get_vadjustment(scroller), "changed",
        [scroller] { stickToBottom(gtk_scrolled_window_get_vadjustment(scroller)); });

    gtk_widget_set_valign(m_ideas.widget(), GTK_ALIGN_END);
    gtk_container_add(GTK_CONTAINER(scroller), m_ideas.widget());
    return m_scroller;
}

GtkWidget* BrainstormPanel::buildEntry()
{
    m_entry = gtk_entry_new();
    gtk_entry_set_has_frame(GTK_ENTRY(m_entry), FALSE);
    addClass(m_entry, "thought");

    // The toolkit's own placeholder goes as soon as the entry has the focus, which here is always.
    auto* const hint = makeLine("What is on your mind?", "hint");
    auto const showHint = [this, hint](char const* preedit) {
        bool const isEmpty = gtk_entry_get_text_length(GTK_ENTRY(m_entry)) == 0 && *preedit == '\0';
        gtk_widget_set_opacity(hint, isEmpty ? 1 : 0);
    };
    connect<void()>(m_entry, "changed", [showHint] { showHint(""); });
    connect<void(char const*)>(m_entry, "preedit-changed", [this, showHint](char const* preedit) {
        showHint(preedit);
        desktop().setComposing(*preedit != '\0');
    });
    connect<void()>(m_entry, "activate", [this] { addTypedIdea(); });

    auto* const overlay = gtk_overlay_new();
    gtk_widget_set_valign(overlay, GTK_ALIGN_CENTER);
    gtk_container_add(GTK_CONTAINER(overlay), m_entry);
    gtk_overlay_add_overlay(GTK_OVERLAY(overlay), hint);
    gtk_overlay_set_overlay_pass_through(GTK_OVERLAY(overlay), hint, TRUE);
    return overlay;
}

GtkWidget* BrainstormPanel::buildStrip()
{
    auto* const strip = makeBox(GTK_ORIENTATION_HORIZONTAL, 6, "strip");

    gtk_box_pack_start(GTK_BOX(strip), buildEntry(), TRUE, TRUE, 0);

    m_pin = gtk_toggle_button_new();
    gtk_container_add(GTK_CONTAINER(m_pin), gtk_image_new_from_icon_name("view-pin-symbolic", GTK_ICON_SIZE_BUTTON));
    gtk_widget_set_tooltip_text(m_pin, "Keep in front of other windows");
    gtk_widget_set_valign(m_pin, GTK_ALIGN_CENTER);
    gtk_widget_set_can_focus(m_pin, FALSE);
    addClass(m_pin, "icon-button");
    gtk_toggle_button_set_active(GTK_TOGGLE_BUTTON(m_pin), m_settings.values().pinsNewPanels);
    connect<void()>(m_pin, "toggled",
        [this] { desktop().setPinned(id(), gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(m_pin))); });
    gtk_box_pack_start(GTK_BOX(strip), m_pin, FALSE, FALSE, 0);

    auto* const settings = makeIconButton("emblem-system-symbolic", "Settings");
    connect<void()>(settings, "clicked", [this] {
        if (m_onSettings)
            m_onSettings();
    });
    gtk_box_pack_start(GTK_BOX(strip), settings, FALSE, FALSE, 0);
    return strip;
}

void BrainstormPanel::connectWindow()
{
    connect<void()>(widget(), "realize", [this] { keepContentAtBottom(widget()); });
    connect<gboolean(GdkEventConfigure*)>(widget(), "configure-event", [this](GdkEventConfigure* news) -> gboolean {
        if (!m_onItsWay)
            return FALSE;
        m_onItsWay->paint(*news);
        return TRUE;
    });
    gtk_widget_add_events(widget(), GDK_BUTTON_PRESS_MASK);
    connect<gboolean(GdkEventButton*)>(widget(), "button-press-event", [this](GdkEventButton* press) -> gboolean {
        if (press->type != GDK_BUTTON_PRESS || press->button != GDK_BUTTON_PRIMARY)
            return FALSE;
        desktop().beginMove(widget(), *press);
        return TRUE;
    });
    if (desktop().hasPlugin())
        return;
    connect<gboolean(GdkEventKey*)>(widget(), "key-press-event", [this](GdkEventKey* event) -> gboolean {
        if (event->keyval != GDK_KEY_Escape)
            return FALSE;
        close();
        return TRUE;
    });
}

void BrainstormPanel::addTypedIdea()
{
    OwnedText const text(g_strstrip(g_strdup(gtk_entry_get_text(GTK_ENTRY(m_entry)))));
    if (*text == '\0')
        return;
    gtk_entry_set_text(GTK_ENTRY(m_entry), "");
    addIdeas({ text.get() });
}

void BrainstormPanel::addIdeas(std::vector<std::string> const& ideas)
{
    m_library.addIdeas(m_brainstormID, ideas);
    showIdeas();
    requestHeight(m_settings.values().animatesHeight);
}

void BrainstormPanel::removeIdea(std::size_t index)
{
    m_library.removeIdea(m_brainstormID, index);
    showIdeas();
    requestHeight(m_settings.values().animatesHeight);
}

void BrainstormPanel::showIdeas()
{
    auto const* const brainstorm = m_library.find(m_brainstormID);
    if (brainstorm)
        m_ideas.show(brainstorm->ideas);
    gtk_widget_set_visible(m_scroller, brainstorm && !brainstorm->ideas.empty());
}

void BrainstormPanel::requestHeight(bool isAnimated)
{
    auto const maximum = maximumHeight();
    auto const preferred = std::clamp(contentHeight(), static_cast<double>(stripHeight), maximum);
    if (desktop().hasPlugin())
        desktop().requestHeight(
            id(), { .minimum = stripHeight, .preferred = preferred, .maximum = maximum }, isAnimated);
    else
        gtk_window_resize(GTK_WINDOW(widget()), stripWidth, static_cast<int>(preferred));
}

double BrainstormPanel::contentHeight() const
{
    int natural = 0;
    int const width = std::max(stripWidth, gtk_widget_get_allocated_width(m_panel));
    gtk_widget_get_preferred_height_for_width(m_panel, width, nullptr, &natural);
    return natural;
}

double BrainstormPanel::maximumHeight() const
{
    auto* const display = gtk_widget_get_display(widget());
    auto* const monitor = gdk_display_get_monitor_at_window(display, gtk_widget_get_window(widget()));
    GdkRectangle usable {};
    gdk_monitor_get_workarea(monitor, &usable);
    return std::max(static_cast<double>(stripHeight), usable.height - screenMargins);
}

void BrainstormPanel::willResize(paneweld::BrainstormWindowResize const& resize)
{
    m_onItsWay.emplace(widget());
    tellStatus("Panel on its way to " + inPoints(resize.height));
}

void BrainstormPanel::didResize(paneweld::BrainstormWindowResize const& resize)
{
    m_onItsWay.reset();
    tellStatus("Panel " + inPoints(resize.height) + " high");
}

void BrainstormPanel::didEndLiveResize(paneweld::BrainstormWindowDidEndLiveResize const& resize)
{
    tellStatus("Panel resized by hand to " + inPoints(resize.width) + " by " + inPoints(resize.height));
}

void BrainstormPanel::tellStatus(std::string const& status) const
{
    if (m_onStatus)
        m_onStatus(status);
}

void BrainstormPanel::didAppear()
{
    gtk_widget_grab_focus(m_entry);
    if (gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(m_pin)))
        desktop().setPinned(id(), true);
    auto const* const brainstorm = m_library.find(m_brainstormID);
    if (brainstorm && !brainstorm->ideas.empty())
        requestHeight(m_settings.values().animatesHeight);
}

} // namespace ideas
