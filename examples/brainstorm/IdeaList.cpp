#include "examples/brainstorm/IdeaList.h"
#include "examples/brainstorm/Attachment.h"

namespace ideas {

namespace {

constexpr std::size_t tintCount = 5;

// A dot, or for what was dropped the picture of its kind.
GtkWidget* makeMark(std::optional<Attachment> const& attachment, std::size_t index)
{
    if (!attachment) {
        auto* const dot = makeBox(GTK_ORIENTATION_HORIZONTAL, 0, "dot");
        addClass(dot, ("tint-" + std::to_string(index % tintCount)).c_str());
        return dot;
    }
    auto* const picture = gtk_image_new_from_gicon(attachment->icon.get(), GTK_ICON_SIZE_MENU);
    addClass(picture, "attachment");
    return picture;
}

} // namespace

IdeaList::IdeaList(std::function<void(std::size_t)> onDelete)
    : m_box(makeBox(GTK_ORIENTATION_VERTICAL, 0, "ideas"))
    , m_onDelete(std::move(onDelete))
{
}

void IdeaList::show(std::vector<std::string> const& ideas)
{
    gtk_container_foreach(
        GTK_CONTAINER(m_box), [](GtkWidget* row, gpointer) { gtk_widget_destroy(row); }, nullptr);
    for (std::size_t index = 0; index < ideas.size(); ++index)
        gtk_box_pack_start(GTK_BOX(m_box), makeRow(ideas[index], index), FALSE, FALSE, 0);
    gtk_widget_show_all(m_box);
}

GtkWidget* IdeaList::makeRow(std::string const& idea, std::size_t index)
{
    auto* const row = makeBox(GTK_ORIENTATION_HORIZONTAL, 14, "idea");

    auto const attachment = attachmentOf(idea);
    auto* const mark = makeMark(attachment, index);
    gtk_widget_set_valign(mark, GTK_ALIGN_CENTER);
    gtk_box_pack_start(GTK_BOX(row), mark, FALSE, FALSE, 0);

    auto* const words = attachment ? makeLine(attachment->name, "idea-text") : makeLabel(idea, "idea-text");
    gtk_box_pack_start(GTK_BOX(row), words, TRUE, TRUE, 0);
    if (!m_onDelete)
        return row;

    auto* const button = makeIconButton("window-close-symbolic", "Delete this idea");
    addClass(button, "delete");
    connect<void()>(button, "clicked", [this, index] { m_onDelete(index); });
    gtk_box_pack_start(GTK_BOX(row), button, FALSE, FALSE, 0);
    return row;
}

} // namespace ideas
