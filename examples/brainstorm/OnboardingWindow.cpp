#include "examples/brainstorm/OnboardingWindow.h"
#include "examples/brainstorm/Illustration.h"

#include <array>

namespace ideas {

namespace {

constexpr int openingWidth = 400;
constexpr int openingHeight = 700;

struct Page {
    char const* name;
    char const* title;
    char const* text;
};

constexpr std::array<Page, 3> pages { {
    { "capture", "Catch it while it is fresh",
        "A thought lasts a few seconds. The panel is one key away, takes a line, and gets out of the way again." },
    { "grow", "It grows as you do",
        "Every line you keep makes the panel a little taller. It rises from the bottom of the screen; the place where "
        "you type never moves." },
    { "stay", "Keep it in sight",
        "Pin the panel and it stays in front while you read, write or draw elsewhere. Escape sends it away." },
} };

GtkWidget* makePage(Page const& page, std::size_t index)
{
    auto* const box = makeBox(GTK_ORIENTATION_VERTICAL, 0, "onboarding-page");
    gtk_box_pack_start(GTK_BOX(box), makeIllustration(index), FALSE, FALSE, 0);
    auto* const title = makeLabel(page.title, "onboarding-title");
    auto* const text = makeLabel(page.text, "onboarding-text");
    for (auto* const label : { title, text }) {
        gtk_label_set_justify(GTK_LABEL(label), GTK_JUSTIFY_CENTER);
        gtk_label_set_xalign(GTK_LABEL(label), 0.5F);
        gtk_label_set_max_width_chars(GTK_LABEL(label), 36);
        gtk_box_pack_start(GTK_BOX(box), label, FALSE, FALSE, 0);
    }
    return box;
}

} // namespace

OnboardingWindow::OnboardingWindow(Desktop& desktop, std::function<void()> onFinished)
    : HostWindow(desktop, paneweld::WindowIdentifier::onboarding("onboarding", "Welcome to Ideas"))
    , m_onFinished(std::move(onFinished))
{
    gtk_window_set_default_size(GTK_WINDOW(widget()), openingWidth, openingHeight);
    gtk_window_set_position(GTK_WINDOW(widget()), GTK_WIN_POS_CENTER);

    m_stack = gtk_stack_new();
    gtk_stack_set_transition_type(GTK_STACK(m_stack), GTK_STACK_TRANSITION_TYPE_SLIDE_LEFT_RIGHT);
    for (std::size_t index = 0; index < pages.size(); ++index)
        gtk_stack_add_named(GTK_STACK(m_stack), makePage(pages[index], index), pages[index].name);

    auto* const content = makeBox(GTK_ORIENTATION_VERTICAL, 0, "onboarding");
    gtk_box_pack_start(GTK_BOX(content), m_stack, TRUE, TRUE, 0);
    gtk_box_pack_end(GTK_BOX(content), buildControls(), FALSE, FALSE, 0);
    gtk_container_add(GTK_CONTAINER(widget()), content);
    gtk_widget_show_all(content);
    show(0);
}

GtkWidget* OnboardingWindow::buildControls()
{
    auto* const controls = makeBox(GTK_ORIENTATION_VERTICAL, 20, "onboarding-controls");
    m_dots = makeBox(GTK_ORIENTATION_HORIZONTAL, 8);
    gtk_widget_set_halign(m_dots, GTK_ALIGN_CENTER);
    for (std::size_t index = 0; index < pages.size(); ++index)
        gtk_box_pack_start(GTK_BOX(m_dots), makeBox(GTK_ORIENTATION_HORIZONTAL, 0, "page-dot"), FALSE, FALSE, 0);
    gtk_box_pack_start(GTK_BOX(controls), m_dots, FALSE, FALSE, 0);

    m_next = gtk_button_new_with_label("");
    addClass(m_next, "primary");
    connect<void()>(m_next, "clicked", [this] {
        if (m_page + 1 < pages.size()) {
            show(m_page + 1);
            return;
        }
        m_onFinished();
        close();
    });
    gtk_box_pack_start(GTK_BOX(controls), m_next, FALSE, FALSE, 0);
    return controls;
}

void OnboardingWindow::show(std::size_t page)
{
    m_page = page;
    gtk_stack_set_visible_child_name(GTK_STACK(m_stack), pages[page].name);
    gtk_button_set_label(GTK_BUTTON(m_next), page + 1 < pages.size() ? "Next" : "Start");

    std::size_t index = 0;
    GList* const dots = gtk_container_get_children(GTK_CONTAINER(m_dots));
    for (GList* dot = dots; dot; dot = dot->next)
        setClass(GTK_WIDGET(dot->data), "current", index++ == page);
    g_list_free(dots);
}

} // namespace ideas
