#pragma once

namespace platform {
class NSApplication;
}

namespace backends {

class Animator;
class Connection;
class EarlyHold;
class EventLoop;
class X11Desktop;
class X11Screen;

// What every window needs to know of the world around it. All of it outlives the windows.
struct X11Context {
    platform::NSApplication& application;
    EventLoop& loop;
    Animator& animator;
    Connection& connection;
    X11Desktop& desktop;
    X11Screen& screen;
    EarlyHold& earlyHold;
};

} // namespace backends
