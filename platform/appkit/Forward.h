#pragma once

// The names of the appkit room, for headers that need no more than a reference.
namespace platform {

class NSAnimationContext;
class NSApplication;
class NSButton;
class NSDraggingInfo;
class NSEventMonitors;
class NSImage;
class NSMenu;
class NSMenuItem;
class NSOpenPanel;
class NSPasteboard;
class NSStatusBar;
class NSStatusBarButton;
class NSStatusItem;
class NSView;
class NSVisualEffectView;
class NSWindow;
class NSWorkspace;
struct NSColor;
struct NSEvent;
struct NSScreen;

} // namespace platform
