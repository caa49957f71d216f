#include "tests/managers/hosts/HostApp.h"

#include <SDL.h>
#include <SDL_syswm.h>
#include <poll.h>

// The app in SDL 2.

namespace {

constexpr int frameMilliseconds = 8;

class SdlHostWindow : public HostWindow {
public:
    explicit SdlHostWindow(WindowWish wish)
        : m_wish(std::move(wish))
        , m_window(SDL_CreateWindow(m_wish.title.c_str(), SDL_WINDOWPOS_UNDEFINED, SDL_WINDOWPOS_UNDEFINED,
              m_wish.width, m_wish.height, SDL_WINDOW_HIDDEN | SDL_WINDOW_RESIZABLE))
    {
        SDL_SetWindowData(m_window, "self", this);
    }
    ~SdlHostWindow() override { SDL_DestroyWindow(m_window); }

    std::uint32_t realize() override
    {
        SDL_SysWMinfo info {};
        SDL_VERSION(&info.version);
        SDL_GetWindowWMInfo(m_window, &info);
        XSync(info.info.x11.display, False);
        return static_cast<std::uint32_t>(info.info.x11.window);
    }
    void show() override
    {
        SDL_ShowWindow(m_window);
        SDL_RaiseWindow(m_window);
    }
    void hide() override { SDL_HideWindow(m_window); }

    void paint()
    {
        auto* const surface = SDL_GetWindowSurface(m_window);
        if (!surface)
            return;
        SDL_FillRect(surface, nullptr, SDL_MapRGB(surface->format, 0, 0, 255));
        SDL_UpdateWindowSurface(m_window);
    }
    void handle(SDL_Event const& event)
    {
        if (event.type == SDL_KEYDOWN)
            m_wish.gotKey();
        else if (event.type == SDL_WINDOWEVENT && event.window.event == SDL_WINDOWEVENT_CLOSE)
            m_wish.askedToClose();
        else if (event.type == SDL_WINDOWEVENT && event.window.event == SDL_WINDOWEVENT_EXPOSED)
            paint();
    }

private:
    WindowWish m_wish;
    SDL_Window* m_window;
};

void handle(SDL_Event const& event)
{
    if (event.type != SDL_KEYDOWN && event.type != SDL_WINDOWEVENT)
        return;
    if (auto* const window = SDL_GetWindowFromID(event.window.windowID))
        static_cast<SdlHostWindow*>(SDL_GetWindowData(window, "self"))->handle(event);
}

// An app has drawn before it opens a panel: the driver that SDL draws by is found with the first window, which takes
// seconds on a slow machine.
void drawOnce()
{
    auto* const window = SDL_CreateWindow("", 0, 0, 1, 1, SDL_WINDOW_HIDDEN);
    SDL_GetWindowSurface(window);
    SDL_DestroyWindow(window);
}

} // namespace

int main(int argc, char** argv)
{
    SDL_SetHint(SDL_HINT_VIDEODRIVER, "x11");
    // Else a compositor that shows our fades is asked to stand aside.
    SDL_SetHint(SDL_HINT_VIDEO_X11_NET_WM_BYPASS_COMPOSITOR, "0");
    if (SDL_Init(SDL_INIT_VIDEO) != 0)
        return 1;
    drawOnce();
    HostApp app(argc, argv, [](WindowWish wish) { return std::make_unique<SdlHostWindow>(std::move(wish)); });
    do {
        // SDL has no descriptor to wait for, so its apps turn once a frame.
        pollfd waits[] = { { app.host().pollableDescriptor(), POLLIN, 0 }, { 0, POLLIN, 0 } };
        poll(waits, 2, frameMilliseconds);
        SDL_Event event;
        while (SDL_PollEvent(&event) != 0)
            handle(event);
        app.host().dispatch();
        // A window gets another X window when it is first painted.
        app.tellWindows();
    } while (app.readCommands());
    return 0;
}
