#include "tests/linux/TrayFixture.h"

#include "platform/appkit/NSDraggingInfo.h"
#include "platform/appkit/NSImage.h"
#include "platform/appkit/NSPasteboard.h"

namespace paneweld_tests {

class TrayFixture::View : public platform::NSView {
public:
    explicit View(TrayFixture& test)
        : m_test(test)
    {
    }

    void mouseDown(platform::NSEvent const&) override { m_test.actions.push_back("left"); }
    void rightMouseDown(platform::NSEvent const&) override
    {
        m_test.actions.push_back("right");
        if (!m_test.menu->itemArray().empty())
            m_test.menu->popUpMenuPositioningItem(nullptr, {}, *m_test.item->button());
    }
    platform::NSDragOperation draggingEntered(platform::NSDraggingInfo&) override
    {
        ++m_test.dragsEntered;
        return platform::NSDragOperation::Copy;
    }
    bool performDragOperation(platform::NSDraggingInfo& info) override
    {
        m_test.dropped.emplace();
        auto const read = info.draggingPasteboard().readObjectsForClasses({ platform::PasteboardClass::URL });
        for (auto const& url : read.value_or(platform::List {}))
            m_test.dropped->push_back(url.asURL()->absoluteString());
        return read.has_value();
    }

private:
    TrayFixture& m_test;
};

TrayFixture::~TrayFixture() = default;

void TrayFixture::startDesktop(SessionBus::Services services, std::vector<std::string> const& serverArguments)
{
    bus = std::make_unique<SessionBus>(services);
    desktop = std::make_unique<Desktop>("1280x800x24", serverArguments);
    toolkit = std::make_unique<Toolkit>(desktop->display());
    onlooker = std::make_unique<Onlooker>(desktop->display());
}

void TrayFixture::startItem()
{
    ASSERT_NO_FATAL_FAILURE(installBackend());
    backend->statusBar()->setPlaceHandler([this] { places.push_back(place()); });
    item = backend->statusBar()->statusItemWithLength(platform::NSVariableStatusItemLength);
    auto const image = std::make_shared<platform::NSImage>(
        platform::URL::fileURL(PANEWELD_TEST_BUNDLE "/Resources/icon.pdf", platform::URL::IsDirectory::No));
    image->setTemplate(true);
    item->button()->setImage(image);
    item->button()->addSubview(std::make_shared<View>(*this), platform::ViewPosition::Above, nullptr);
}

bool TrayFixture::comesTo(platform::StatusItemPlace wanted)
{
    return pump([&] { return place() == wanted; });
}

void TrayFixture::click(Geometry const& icon, int button)
{
    toolkit->movePointer(icon.x + icon.width / 2, icon.y + icon.height / 2);
    toolkit->button(button, true);
    toolkit->button(button, false);
}

void TrayFixture::strike(xcb_keycode_t key)
{
    toolkit->press(key);
    toolkit->release(key);
}

xcb_window_t TrayFixture::icon() { return find("app.quorvel.iosapp"); }

xcb_window_t TrayFixture::openMenu() { return find("Paneweld"); }

xcb_window_t TrayFixture::find(std::string const& windowClass)
{
    return toolkit->find(toolkit->root(), [&](auto window) {
        auto const text = toolkit->text(window, "WM_CLASS");
        return text && text->find(std::string(1, '\0') + windowClass) != std::string::npos
            && toolkit->isViewable(window);
    });
}

} // namespace paneweld_tests
