#include "backends/linux/x11/WindowProperties.h"

#include "backends/linux/x11/Connection.h"
#include "backends/linux/x11/PropertyValues.h"

#include <algorithm>

namespace backends {

namespace {

constexpr std::uint32_t inputHintFlag = 1; // of WM_HINTS

std::vector<std::uint32_t> wordsIn(xcb_get_property_reply_t const* reply)
{
    auto const words = wordsOf(reply);
    return { words.begin(), words.end() };
}

} // namespace

WindowProperties::WindowProperties(X11Context const& context, xcb_window_t window, Observer observer)
    : m_context(context)
    , m_window(window)
    , m_observer(std::move(observer))
{
    auto const& connection = m_context.connection;
    m_readers[connection.atom(AtomName::NET_WM_NAME)] = [this](auto const* reply) { handleNetName(reply); };
    m_readers[XCB_ATOM_WM_NAME] = [this](auto const* reply) { handleName(reply); };
    m_readers[XCB_ATOM_WM_CLASS] = [this](auto const* reply) { handleClass(reply); };
    m_readers[XCB_ATOM_WM_HINTS] = [this](auto const* reply) { handleHints(reply); };
    m_readers[connection.atom(AtomName::WM_PROTOCOLS)] = [this](auto const* reply) { handleProtocols(reply); };
    m_readers[connection.atom(AtomName::GTK_FRAME_EXTENTS)] = [this](auto const* reply) { handleInsets(reply); };
    m_readers[connection.atom(AtomName::WM_STATE)] = [this](auto const* reply) { handleManagedState(reply); };
    m_readers[connection.atom(AtomName::NET_WM_WINDOW_OPACITY)]
        = [this](auto const* reply) { m_observer.opacityWasRead(firstWordOf(reply)); };
    m_readers[XCB_ATOM_WM_NORMAL_HINTS]
        = [this](auto const* reply) { m_observer.sizeHintsWereRead(SizeHints(wordsOf(reply))); };
    m_readers[connection.atom(AtomName::MOTIF_WM_HINTS)]
        = [this](auto const* reply) { m_observer.decorationsWereRead(wordsIn(reply)); };
    m_readers[connection.atom(AtomName::NET_WM_STATE)]
        = [this](auto const* reply) { m_observer.statesWereRead(wordsIn(reply)); };
}

std::string WindowProperties::title() const { return m_netName.value_or(m_name); }

void WindowProperties::setTitle(std::string const& title)
{
    m_netName = title;
    m_name = title;
    auto& connection = m_context.connection;
    // In units of four bytes, and the request's own header is one of them.
    auto const longest = (std::size_t { xcb_get_maximum_request_length(connection.wire()) } - 8) * 4;
    if (title.size() > longest) {
        connection.log().error(
            "title too long for the X server: %lld bytes", { static_cast<std::int64_t>(title.size()) });
        return;
    }
    auto const type = connection.atom(AtomName::UTF8_STRING);
    for (auto const property : { connection.atom(AtomName::NET_WM_NAME), xcb_atom_t { XCB_ATOM_WM_NAME } }) {
        noteOwnWriting(property);
        xcb_change_property(connection.wire(), XCB_PROP_MODE_REPLACE, m_window, property, type, 8,
            static_cast<std::uint32_t>(title.size()), title.data());
    }
}

void WindowProperties::readAll(std::function<void()> done)
{
    auto left = m_readers.size();
    for (auto const& [property, reader] : m_readers) {
        bool const isLast = --left == 0;
        read(property, isLast ? done : std::function<void()> {});
    }
}

void WindowProperties::handleChange(xcb_atom_t property)
{
    if (!m_readers.contains(property))
        return;
    if (auto const asked = m_asked.find(property); asked != m_asked.end()) {
        asked->second = true;
        return;
    }
    readLatest(property);
}

void WindowProperties::readLatest(xcb_atom_t property)
{
    m_asked[property] = false;
    read(property, [this, property] {
        bool const hasChangedAgain = m_asked[property];
        m_asked.erase(property);
        if (hasChangedAgain)
            readLatest(property);
    });
}

void WindowProperties::read(xcb_atom_t property, std::function<void()> done)
{
    m_context.connection.askProperty(m_window, property,
        [this, weak = m_owner, property, writings = m_ownWritings[property], done = std::move(done)](
            auto const* reply) {
            auto const owner = weak.lock();
            if (!owner)
                return;
            if (reply && writings == m_ownWritings[property])
                handleRead(property, reply);
            if (done)
                done();
        });
}

void WindowProperties::handleRead(xcb_atom_t property, xcb_get_property_reply_t const* reply)
{
    m_readers.find(property)->second(reply);
}

void WindowProperties::handleNetName(xcb_get_property_reply_t const* reply)
{
    m_netName.reset();
    if (reply->type != XCB_ATOM_NONE)
        m_netName = bytesOf(reply);
}

void WindowProperties::handleName(xcb_get_property_reply_t const* reply)
{
    auto const bytes = bytesOf(reply);
    m_name = reply->type == XCB_ATOM_STRING ? textFromLatin1(bytes) : bytes;
}

void WindowProperties::handleClass(xcb_get_property_reply_t const* reply)
{
    // Two texts, each ended by a zero: the instance and the class (ICCCM 4.1.2.5).
    m_className.reset();
    auto const bytes = bytesOf(reply);
    auto const end = bytes.find('\0');
    if (end == std::string::npos)
        return;
    auto name = bytes.substr(end + 1);
    name.resize(std::min(name.find('\0'), name.size()));
    if (!name.empty())
        m_className = std::move(name);
}

void WindowProperties::handleProtocols(xcb_get_property_reply_t const* reply)
{
    auto const words = wordsOf(reply);
    auto const has = [&](AtomName name) {
        return std::find(words.begin(), words.end(), m_context.connection.atom(name)) != words.end();
    };
    m_canDelete = has(AtomName::WM_DELETE_WINDOW);
    m_takesFocus = has(AtomName::WM_TAKE_FOCUS);
}

void WindowProperties::handleHints(xcb_get_property_reply_t const* reply)
{
    auto const words = wordsOf(reply);
    m_takesInput = words.size() < 2 || (words[0] & inputHintFlag) == 0 || words[1] != 0;
}

void WindowProperties::handleInsets(xcb_get_property_reply_t const* reply)
{
    // In this order on the wire: left, right, top, bottom.
    PixelInsets insets;
    auto const words = wordsOf(reply);
    if (words.size() >= 4) {
        insets = { pixelsIn(words[0]), pixelsIn(words[1]), pixelsIn(words[2]), pixelsIn(words[3]) };
    }
    m_observer.insetsWereRead(insets);
}

void WindowProperties::handleManagedState(xcb_get_property_reply_t const* reply)
{
    m_observer.managedStateWasRead(firstWordOf(reply));
}

} // namespace backends
