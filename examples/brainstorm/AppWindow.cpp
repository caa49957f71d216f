#include "examples/brainstorm/AppWindow.h"

namespace ideas {

namespace {

constexpr int openingWidth = 860;
constexpr int openingHeight = 640;
constexpr int sidebarWidth = 264;
constexpr int traceHeight = 228;

GtkWidget* makeEntryRow(Brainstorm const& brainstorm)
{
    auto* const row = makeBox(GTK_ORIENTATION_VERTICAL, 2, "entry-row");
    for (auto* const line :
        { makeLine(brainstorm.title(), "entry-title"), makeLine(brainstorm.summary(), "entry-summary") })
        gtk_box_pack_start(GTK_BOX(row), line, FALSE, FALSE, 0);
    return row;
}

} // namespace

AppWindow::AppWindow(Desktop& desktop, Library& library, Activity& activity, Actions actions)
    : HostWindow(desktop, paneweld::WindowIdentifier::iOSApp("main", "Ideas"))
    , m_library(library)
    , m_activity(activity)
    , m_actions(std::move(actions))
{
    build();
    for (auto const& entry : m_activity.entries())
        m_trace.append(entry);
    m_activity.onEntry([this](Activity::Entry const& entry) {
        if (widget())
            m_trace.append(entry);
    });
    addShortcut(GDK_KEY_n, m_actions.newBrainstorm);
    addShortcut(GDK_KEY_comma, m_actions.openSettings);
    refresh();
}

AppWindow::~AppWindow() { m_activity.onEntry(nullptr); }

void AppWindow::build()
{
    gtk_window_set_default_size(GTK_WINDOW(widget()), openingWidth, openingHeight);
    gtk_window_set_position(GTK_WINDOW(widget()), GTK_WIN_POS_CENTER);

    auto* const right = makeBox(GTK_ORIENTATION_VERTICAL, 0);
    gtk_box_pack_start(GTK_BOX(right), buildDetail(), TRUE, TRUE, 0);
    gtk_box_pack_start(GTK_BOX(right), buildActivity(), FALSE, FALSE, 0);

    auto* const columns = makeBox(GTK_ORIENTATION_HORIZONTAL, 0, "app");
    gtk_box_pack_start(GTK_BOX(columns), buildSidebar(), FALSE, FALSE, 0);
    gtk_box_pack_start(GTK_BOX(columns), right, TRUE, TRUE, 0);
    gtk_container_add(GTK_CONTAINER(widget()), columns);
    gtk_widget_show_all(columns);
}

GtkWidget* AppWindow::buildSidebar()
{
    auto* const sidebar = makeBox(GTK_ORIENTATION_VERTICAL, 0, "sidebar");
    gtk_widget_set_size_request(sidebar, sidebarWidth, -1);

    auto* const add = gtk_button_new_with_label("New brainstorm");
    addClass(add, "primary");
    gtk_widget_set_tooltip_text(add, "Ctrl+N");
    connect<void()>(add, "clicked", m_actions.newBrainstorm);
    gtk_box_pack_start(GTK_BOX(sidebar), add, FALSE, FALSE, 0);

    m_list = gtk_list_box_new();
    addClass(m_list, "entries");
    connect<void(GtkListBoxRow*)>(m_list, "row-selected", [this](GtkListBoxRow* row) {
        if (!m_isRefreshing && row)
            select(static_cast<char const*>(g_object_get_data(G_OBJECT(row), "brainstorm")));
    });
    auto* const placeholder = makeLabel("Your brainstorms gather here.", "placeholder");
    gtk_widget_show(placeholder);
    gtk_list_box_set_placeholder(GTK_LIST_BOX(m_list), placeholder);
    auto* const scroller = gtk_scrolled_window_new(nullptr, nullptr);
    gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scroller), GTK_POLICY_NEVER, GTK_POLICY_AUTOMATIC);
    gtk_container_add(GTK_CONTAINER(scroller), m_list);
    gtk_box_pack_start(GTK_BOX(sidebar), scroller, TRUE, TRUE, 0);

    auto* const introduction = makeSidebarButton("Introduction", "help-browser-symbolic", m_actions.openOnboarding);
    auto* const settings = makeSidebarButton("Settings", "emblem-system-symbolic", m_actions.openSettings);
    gtk_box_pack_end(GTK_BOX(sidebar), settings, FALSE, FALSE, 0);
    gtk_box_pack_end(GTK_BOX(sidebar), introduction, FALSE, FALSE, 0);
    return sidebar;
}

GtkWidget* AppWindow::makeSidebarButton(char const* text, char const* icon, std::function<void()> const& action)
{
    auto* const content = makeBox(GTK_ORIENTATION_HORIZONTAL, 10);
    gtk_box_pack_start(GTK_BOX(content), gtk_image_new_from_icon_name(icon, GTK_ICON_SIZE_BUTTON), FALSE, FALSE, 0);
    gtk_box_pack_start(GTK_BOX(content), makeLine(text, "sidebar-label"), TRUE, TRUE, 0);
    auto* const button = gtk_button_new();
    gtk_container_add(GTK_CONTAINER(button), content);
    addClass(button, "sidebar-button");
    connect<void()>(button, "clicked", action);
    return button;
}

GtkWidget* AppWindow::buildDetail()
{
    auto* const detail = makeBox(GTK_ORIENTATION_VERTICAL, 0, "detail");
    auto* const where = makeLine("Ideas on " + desktop().machineName(), "overline");
    gtk_box_pack_start(GTK_BOX(detail), where, FALSE, FALSE, 0);
    if (!desktop().hasPlugin())
        gtk_box_pack_start(GTK_BOX(detail), makeLine(desktop().problem() + ".", "notice"), FALSE, FALSE, 0);

    auto* const header = makeBox(GTK_ORIENTATION_HORIZONTAL, 16);
    auto* const words = makeBox(GTK_ORIENTATION_VERTICAL, 4);
    m_title = makeLine("", "headline");
    m_summary = makeLine("", "summary");
    gtk_box_pack_start(GTK_BOX(words), m_title, FALSE, FALSE, 0);
    gtk_box_pack_start(GTK_BOX(words), m_summary, FALSE, FALSE, 0);
    gtk_box_pack_start(GTK_BOX(header), words, TRUE, TRUE, 0);
    m_continue = gtk_button_new_with_label("Continue");
    addClass(m_continue, "secondary");
    gtk_widget_set_valign(m_continue, GTK_ALIGN_START);
    gtk_widget_set_no_show_all(m_continue, TRUE);
    connect<void()>(m_continue, "clicked", [this] { m_actions.openBrainstorm(m_selected); });
    gtk_box_pack_start(GTK_BOX(header), m_continue, FALSE, FALSE, 0);
    gtk_box_pack_start(GTK_BOX(detail), header, FALSE, FALSE, 0);

    auto* const scroller = gtk_scrolled_window_new(nullptr, nullptr);
    gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scroller), GTK_POLICY_NEVER, GTK_POLICY_AUTOMATIC);
    addClass(m_ideas.widget(), "cards");
    gtk_container_add(GTK_CONTAINER(scroller), m_ideas.widget());
    gtk_box_pack_start(GTK_BOX(detail), scroller, TRUE, TRUE, 0);
    return detail;
}

GtkWidget* AppWindow::buildActivity()
{
    auto* const header = makeBox(GTK_ORIENTATION_HORIZONTAL, 12, "trace-header");
    gtk_box_pack_start(GTK_BOX(header), makeLine("Activity", "trace-title"), FALSE, FALSE, 0);
    m_status = makeLine("", "trace-status");
    gtk_label_set_xalign(GTK_LABEL(m_status), 1);
    gtk_box_pack_end(GTK_BOX(header), m_status, TRUE, TRUE, 0);

    auto* const trace = makeBox(GTK_ORIENTATION_VERTICAL, 0, "trace");
    gtk_widget_set_size_request(trace, -1, traceHeight);
    gtk_box_pack_start(GTK_BOX(trace), header, FALSE, FALSE, 0);
    gtk_box_pack_start(GTK_BOX(trace), m_trace.widget(), TRUE, TRUE, 0);
    return trace;
}

void AppWindow::refresh()
{
    if (!widget())
        return;
    m_isRefreshing = true;
    gtk_container_foreach(
        GTK_CONTAINER(m_list), [](GtkWidget* row, gpointer) { gtk_widget_destroy(row); }, nullptr);
    // A new brainstorm is what the user is busy with.
    auto const newest = m_library.brainstorms().empty() ? "" : m_library.brainstorms().front().id;
    if (newest != m_newest || !m_library.find(m_selected))
        m_selected = newest;
    m_newest = newest;
    for (auto const& brainstorm : m_library.brainstorms()) {
        auto* const row = gtk_list_box_row_new();
        g_object_set_data_full(G_OBJECT(row), "brainstorm", g_strdup(brainstorm.id.c_str()), g_free);
        gtk_container_add(GTK_CONTAINER(row), makeEntryRow(brainstorm));
        gtk_list_box_insert(GTK_LIST_BOX(m_list), row, -1);
        if (brainstorm.id == m_selected)
            gtk_list_box_select_row(GTK_LIST_BOX(m_list), GTK_LIST_BOX_ROW(row));
    }
    gtk_widget_show_all(m_list);
    m_isRefreshing = false;
    showDetail();
}

void AppWindow::select(std::string const& brainstormID)
{
    m_selected = brainstormID;
    showDetail();
}

void AppWindow::showDetail()
{
    auto const* const brainstorm = m_library.find(m_selected);
    gtk_widget_set_visible(m_continue, brainstorm != nullptr);
    gtk_label_set_text(GTK_LABEL(m_title), brainstorm ? brainstorm->title().c_str() : "Nothing here yet");
    gtk_label_set_text(GTK_LABEL(m_summary),
        brainstorm ? brainstorm->summary().c_str() : "Start a brainstorm, and say what is on your mind.");
    m_ideas.show(brainstorm ? brainstorm->ideas : std::vector<std::string> {});
}

void AppWindow::showStatus(std::string const& status)
{
    if (widget())
        gtk_label_set_text(GTK_LABEL(m_status), status.c_str());
}

} // namespace ideas
