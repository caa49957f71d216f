#include "backends/linux/x11/WindowDecorations.h"

#include "backends/linux/x11/Connection.h"

#include <utility>

namespace backends {

using platform::NSButton;
using platform::TitleVisibility;
using platform::WindowButton;
using platform::WindowStyleMask;

namespace {

// Words of _MOTIF_WM_HINTS: flags, functions, decorations, input mode, status.
constexpr std::uint32_t functionsFlag = 1;
constexpr std::uint32_t decorationsFlag = 2;
constexpr std::uint32_t resizeFunction = 2;
constexpr std::uint32_t moveFunction = 4;
constexpr std::uint32_t minimizeFunction = 8;
constexpr std::uint32_t maximizeFunction = 16;
constexpr std::uint32_t closeFunction = 32;

} // namespace

WindowDecorations::WindowDecorations(X11Context const& context, xcb_window_t window)
    : m_context(context)
    , m_window(window)
    , m_miniaturize([this] { update(); })
    , m_zoom([this] { update(); })
{
}

void WindowDecorations::setStyleMask(WindowStyleMask mask)
{
    m_styleMask = mask;
    update();
}

void WindowDecorations::setTitlebarAppearsTransparent(bool isTransparent)
{
    m_isTransparent = isTransparent;
    update();
}

void WindowDecorations::setTitleVisibility(TitleVisibility visibility)
{
    m_titleVisibility = visibility;
    update();
}

NSButton* WindowDecorations::button(WindowButton button)
{
    switch (button) {
    case WindowButton::Close:
        return &m_close;
    case WindowButton::Miniaturize:
        return &m_miniaturize;
    case WindowButton::Zoom:
        return &m_zoom;
    }
    return nullptr;
}

bool WindowDecorations::isBorderless() const
{
    return m_isTransparent && m_titleVisibility == TitleVisibility::Hidden
        && (m_styleMask & platform::styleMaskFullSizeContentView) != 0;
}

void WindowDecorations::setBlursBehind(bool blurs)
{
    if (std::exchange(m_blursBehind, blurs) == blurs)
        return;
    auto& connection = m_context.connection;
    auto const property = connection.atom(AtomName::KDE_NET_WM_BLUR_BEHIND_REGION);
    // No rectangle at all stands for the whole window.
    if (blurs)
        xcb_change_property(
            connection.wire(), XCB_PROP_MODE_REPLACE, m_window, property, XCB_ATOM_CARDINAL, 32, 0, nullptr);
    else
        xcb_delete_property(connection.wire(), m_window, property);
}

std::optional<std::vector<std::uint32_t>> WindowDecorations::wanted() const
{
    // Without decorations there are no buttons; the functions stay, so that keys of the window manager work on.
    if (isBorderless())
        return std::vector<std::uint32_t> { decorationsFlag, 0, 0, 0, 0 };
    if (!m_miniaturize.isHidden() && !m_zoom.isHidden())
        return std::nullopt;
    auto hints = m_toolkit;
    hints.resize(5);
    auto functions = resizeFunction | moveFunction | closeFunction;
    if (!m_miniaturize.isHidden())
        functions |= minimizeFunction;
    if (!m_zoom.isHidden())
        functions |= maximizeFunction;
    hints[0] |= functionsFlag;
    hints[1] = functions;
    return hints;
}

void WindowDecorations::update()
{
    auto const hints = wanted();
    if (hints == m_written)
        return;
    m_written = hints;
    m_willWrite();
    auto& connection = m_context.connection;
    auto const property = connection.atom(AtomName::MOTIF_WM_HINTS);
    auto const& words = hints ? *hints : m_toolkit;
    if (words.empty())
        xcb_delete_property(connection.wire(), m_window, property);
    else
        xcb_change_property(connection.wire(), XCB_PROP_MODE_REPLACE, m_window, property, property, 32,
            static_cast<std::uint32_t>(words.size()), words.data());
}

void WindowDecorations::handleRead(std::vector<std::uint32_t> words)
{
    if (m_written && words == *m_written)
        return;
    m_toolkit = std::move(words);
    // The toolkit wrote over what was set here.
    if (std::exchange(m_written, std::nullopt))
        update();
}

} // namespace backends
