#include "backends/linux/x11/Handles.h"
#include "iOS/AppKitController.h"
#include "iOS/NotificationCenter+Paneweld.h"
#include "iOS/WindowIdentifier.h"
#include "tests/support/RunOptions.h"
#include "tests/support/X11Stage.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <iostream>
#include <limits>
#include <malloc.h>
#include <random>
#include <sstream>

using namespace paneweld;
using paneweld_tests::Geometry;

namespace {

constexpr std::size_t mostWindows = 12;
constexpr int stepsOfARound = 400;
constexpr std::size_t memoryLimit = 32 * 1024; // bytes
constexpr std::chrono::minutes wordsEvery { 1 };

// Any order of what hosts, users and window managers do, drawn from a seed. The plug-in and a window manager are real.
class Soak : public X11Stage {
protected:
    void SetUp() override
    {
        open();
        controller = AppKitController::create(*backend);
    }

    int below(int end) { return static_cast<int>(random() % static_cast<unsigned>(end)); }
    template<typename List>
    auto const& oneOf(List const& list)
    {
        return list[static_cast<std::size_t>(below(static_cast<int>(std::size(list))))];
    }

    std::string anyID() { return "w" + std::to_string(below(6)); }

    std::string anyTitle()
    {
        static constexpr std::array types { "brainstorm", "brainstorm", "iOSApp", "settings", "onboarding", "nothing" };
        if (below(4) == 0)
            return below(2) == 0 ? "plain" : "{\"id\":\"w1\",\"type\":\"brainsto";
        return WindowIdentifier::create(anyID(), oneOf(types), "Title")->encoded();
    }

    double anyLength()
    {
        static constexpr std::array odd { 0.0, -1.0, 1e9, std::numeric_limits<double>::quiet_NaN(),
            std::numeric_limits<double>::infinity() };
        return below(8) == 0 ? oneOf(odd) : 60 + below(700);
    }

    Geometry anyPlace() { return { below(900), below(600), 50 + below(700), 50 + below(500) }; }

    void openAny()
    {
        if (windows.size() >= mostWindows)
            return closeAny();
        auto const made = toolkit->make({ .geometry = anyPlace(), .title = anyTitle() });
        windows.push_back(made);
        if (below(3) == 0)
            backend->announceX11Window(made);
        toolkit->map(made);
        // Gone before anybody can have asked about it.
        if (below(8) == 0)
            closeAny();
    }

    void closeAny()
    {
        if (windows.empty())
            return;
        auto const position = windows.begin() + below(static_cast<int>(windows.size()));
        if (auto const known = window(*position); known && below(3) == 0) {
            // The toolkit destroys it when it hears of that.
            known->close();
            return;
        }
        toolkit->destroy(*position);
        windows.erase(position);
    }

    void requestAny()
    {
        BrainstormWindowPreferredHeightDidChange payload { anyID(), below(2) == 0 };
        for (auto* length :
            { &payload.preferredHeight, &payload.minHeight, &payload.maxHeight, &payload.preferredWidth }) {
            if (below(2) == 0)
                *length = anyLength();
        }
        post(NotificationName::brainstormWindowPreferredHeightDidChange(), payload.userInfo());
    }

    void postNonsense()
    {
        std::array const names { NotificationName::brainstormWindowPreferredHeightDidChange(),
            NotificationName::brainstormWindowPinStateDidChange(), NotificationName::updateMenuItemTitle(),
            NotificationName::updateGlobalNewBrainstormShortcut() };
        std::array const values { platform::Value(), platform::Value("text"), platform::Value(-3),
            platform::Value(platform::List { 1, 2 }) };
        post(oneOf(names), { { "windowID", oneOf(values) }, { "animate", oneOf(values) }, { "more", oneOf(values) } });
    }

    static void post(platform::NotificationName const& name, platform::Dictionary userInfo)
    {
        platform::NotificationCenter::defaultCenter().post({ name, nullptr, std::move(userInfo) });
    }

    // What toolkit and user do to a window behind the plug-in's back.
    void handleAny()
    {
        if (windows.empty())
            return;
        auto const any = oneOf(windows);
        switch (below(7)) {
        case 0:
            return toolkit->setTitle(any, anyTitle());
        case 1:
            return toolkit->iconify(any);
        case 2:
            return toolkit->withdraw(any);
        case 3:
            return toolkit->map(any);
        case 4: {
            auto const place = anyPlace();
            toolkit->sendToRoot(any, "_NET_MOVERESIZE_WINDOW",
                { 0xF00, static_cast<std::uint32_t>(place.x), static_cast<std::uint32_t>(place.y),
                    static_cast<std::uint32_t>(place.width), static_cast<std::uint32_t>(place.height) });
            return;
        }
        case 5: {
            // The toolkit rewrites its limits: least 10 by 10, at most 500 by 500 pixels (ICCCM 4.1.2.3).
            constexpr std::uint32_t hasLeast = 1 << 4, hasMost = 1 << 5;
            toolkit->setWords(any, "WM_NORMAL_HINTS", XCB_ATOM_WM_SIZE_HINTS,
                { hasLeast | hasMost, 0, 0, 0, 0, 10, 10, 500, 500, 0, 0, 0, 0, 0, 0, 0, 0, 0 });
            return;
        }
        default:
            if (auto const known = window(any))
                known->makeKeyAndOrderFront();
        }
    }

    void step()
    {
        switch (below(12)) {
        case 0:
        case 1:
        case 2:
            return openAny();
        case 3:
            return closeAny();
        case 4:
        case 5:
        case 6:
            return requestAny();
        case 7:
            return post(NotificationName::brainstormWindowPinStateDidChange(),
                BrainstormWindowPinStateDidChange { anyID(), below(2) == 0 }.userInfo());
        case 8:
            return below(2) == 0
                ? postNonsense()
                : post(NotificationName::updateMenuItemTitle(), UpdateMenuItemTitle { below(2) == 0 }.userInfo());
        case 9:
            pressEscape();
            break;
        default:
            handleAny();
        }
    }

    void forgetTheDead()
    {
        std::erase_if(windows, [this](auto xid) { return !isThere(xid); });
    }

    bool isThere(xcb_window_t xid)
    {
        auto const cookie = xcb_get_geometry(onlooker->wire(), xid);
        return backends::XHandle<xcb_get_geometry_reply_t>(xcb_get_geometry_reply(onlooker->wire(), cookie, nullptr))
            != nullptr;
    }

    bool isSeen(xcb_window_t xid)
    {
        return !onlooker->isViewable(xid) || (onlooker->opacity(xid) == 1 && !onlooker->hasEmptyShape(xid));
    }

    std::string theUnseen()
    {
        std::ostringstream text;
        for (auto const xid : windows) {
            if (isSeen(xid))
                continue;
            auto const known = window(xid);
            text << std::hex << xid << " opacity " << onlooker->opacity(xid)
                 << (onlooker->hasEmptyShape(xid) ? ", empty shape" : "");
            if (known)
                text << ", known as " << known->title() << ", alpha " << known->alphaValue()
                     << (known->isVisible() ? ", visible" : "") << (known->isListed() ? ", listed" : "");
            text << '\n';
        }
        return text.str();
    }

    void round()
    {
        for (int i = 0; i < stepsOfARound; ++i) {
            step();
            // A host's loop is not always there.
            if (below(3) == 0)
                settle();
            forgetTheDead();
        }
        if (below(2) == 0) {
            desktop->endWindowManager();
            settle();
            desktop->startWindowManager();
        }
        // When it is quiet, whatever is mapped is seen.
        EXPECT_TRUE(pumpUntil([&] {
            forgetTheDead();
            return std::all_of(windows.begin(), windows.end(), [&](auto xid) { return isSeen(xid); });
        })) << theUnseen();
        for (auto const xid : windows)
            toolkit->destroy(xid);
        windows.clear();
        EXPECT_TRUE(pumpUntil([&] { return backend->application().windows().empty(); }));
        // Animations of windows that are gone end at their own time.
        pumpFor(std::chrono::milliseconds(400));
        news.clear();
        news.shrink_to_fit();
        onlooker->clear();
        toolkit->pressedKeys.clear();
        toolkit->releasedKeys.clear();
    }

    std::shared_ptr<AppKitController> controller;
    std::vector<xcb_window_t> windows;
    std::mt19937 random { paneweld_tests::testSeed() };
};

} // namespace

// PANEWELD_TEST_SOAK makes it longer.
TEST_F(Soak, AnyOrderOfDoingsLeavesNothingBehind)
{
    std::chrono::seconds const length { paneweld_tests::countUnderTest("PANEWELD_TEST_SOAK", 0) };
    testing::internal::CaptureStderr();
    round();
    round();
    auto const before = mallinfo2().uordblks;
    auto const begin = std::chrono::steady_clock::now();
    auto nextWord = begin + wordsEvery;
    std::size_t inUse = 0;
    int rounds = 0;
    do {
        round();
        ++rounds;
        inUse = mallinfo2().uordblks;
        if (std::chrono::steady_clock::now() >= nextWord) {
            std::cout << rounds << " rounds: " << static_cast<std::ptrdiff_t>(inUse - before)
                      << " bytes more than before" << std::endl;
            nextWord += wordsEvery;
        }
    } while (!HasFailure() && std::chrono::steady_clock::now() < begin + length);
    RecordProperty("rounds", rounds);
    EXPECT_LT(inUse, before + memoryLimit) << "bytes in use after " << rounds << " rounds";
    auto const said = testing::internal::GetCapturedStderr();
    // Requests about windows that have gone are nobody's fault; all others would be ours.
    EXPECT_EQ(said.find(":x11 "), std::string::npos) << said;
    // And it still works.
    auto const panel = show(WindowIdentifier::create("last", "brainstorm", "Last")->encoded());
    EXPECT_TRUE(pumpUntil([&] { return panel->frame().height == 91 && isSeen(xid(panel)); }));
    EXPECT_EQ(panel->title(), "Last");
}
