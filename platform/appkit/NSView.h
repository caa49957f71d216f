#pragma once

#include "platform/foundation/Geometry.h"
#include "platform/runtime/NSObject.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace platform {

class NSDraggingInfo;
class NSMenu;
class NSMenuItem;
class NSView;
enum class NSDragOperation : std::uint64_t;
struct NSEvent;

enum class ViewPosition { Above = 1, Below = -1 };
enum class LayoutAttribute { Leading, Trailing, Top, Bottom };

// One edge of a view, for pinning it to another.
struct NSLayoutAnchor {
    std::weak_ptr<NSView> view;
    LayoutAttribute attribute;
};

// "This edge lies on that edge." Active once it is given to activateConstraints.
struct NSLayoutConstraint {
    NSLayoutAnchor first;
    NSLayoutAnchor second;

    static void activateConstraints(std::vector<NSLayoutConstraint> constraints);
};

inline NSLayoutConstraint constraintEqualToAnchor(NSLayoutAnchor first, NSLayoutAnchor second)
{
    return { std::move(first), std::move(second) };
}

// What a view is drawn into, as far as anybody here asks.
class CALayer {
public:
    bool masksToBounds() const { return m_masksToBounds; }
    void setMasksToBounds(bool masks) { m_masksToBounds = masks; }

private:
    bool m_masksToBounds = false;
};

// An area of a window as plain data: the host draws its content with its own toolkit, and a backend reads from the
// tree what it can do for it. Main thread only.
class NSView : public NSObject {
public:
    NSView() = default;
    // In points, in the coordinates of the view that it is added to.
    explicit NSView(Rect frame)
        : m_frame(frame)
    {
    }

    Rect const& frame() const { return m_frame; }
    void setFrame(Rect frame) { m_frame = frame; }
    // The same size, from its own corner.
    Rect bounds() const { return { 0, 0, m_frame.width, m_frame.height }; }

    bool wantsLayer() const { return m_layer != nullptr; }
    void setWantsLayer(bool wantsLayer);
    // Null as long as no layer is wanted.
    CALayer* layer() const { return m_layer.get(); }

    bool translatesAutoresizingMaskIntoConstraints() const { return m_translatesAutoresizingMask; }
    void setTranslatesAutoresizingMaskIntoConstraints(bool translates) { m_translatesAutoresizingMask = translates; }

    // Bottom-most first.
    std::vector<std::shared_ptr<NSView>> const& subviews() const { return m_subviews; }
    // Relative to nothing: above or below all other subviews.
    void addSubview(std::shared_ptr<NSView> view, ViewPosition position, std::shared_ptr<NSView> const& relativeTo);

    // What may be dragged onto the view, by the names of NSPasteboard.h.
    std::vector<std::string> const& registeredDraggedTypes() const { return m_draggedTypes; }
    void registerForDraggedTypes(std::vector<std::string> types) { m_draggedTypes = std::move(types); }

    // What the user does with the view. A view that does not override one of them takes no notice.
    virtual void mouseDown(NSEvent const&) { }
    virtual void rightMouseDown(NSEvent const&) { }
    virtual NSDragOperation draggingEntered(NSDraggingInfo& info);
    virtual bool performDragOperation(NSDraggingInfo&) { return false; }
    // For backends whose views can show menus: at a point of the bounds, with the item under the pointer or null.
    virtual void showMenu(std::shared_ptr<NSMenu> const&, std::shared_ptr<NSMenuItem> const&, Point) { }

    // For backends: what happens to the view happens to the top-most view that covers it.
    void reportMouseDown(NSEvent const& event) { topMost().mouseDown(event); }
    void reportRightMouseDown(NSEvent const& event) { topMost().rightMouseDown(event); }
    NSDragOperation reportDraggingEntered(NSDraggingInfo& info);
    bool reportPerformDragOperation(NSDraggingInfo& info) { return topMost().performDragOperation(info); }

    NSLayoutAnchor leadingAnchor() { return anchor(LayoutAttribute::Leading); }
    NSLayoutAnchor trailingAnchor() { return anchor(LayoutAttribute::Trailing); }
    NSLayoutAnchor topAnchor() { return anchor(LayoutAttribute::Top); }
    NSLayoutAnchor bottomAnchor() { return anchor(LayoutAttribute::Bottom); }
    // The active constraints whose first edge is this view's.
    std::vector<NSLayoutConstraint> const& constraints() const { return m_constraints; }

    // Called after a subview came. A backend's window listens at its content view.
    void setHierarchyObserver(std::function<void()> didChange) { m_hierarchyDidChange = std::move(didChange); }

private:
    friend struct NSLayoutConstraint;

    NSLayoutAnchor anchor(LayoutAttribute attribute);
    NSView& topMost();

    Rect m_frame {};
    std::vector<std::string> m_draggedTypes;
    std::unique_ptr<CALayer> m_layer;
    std::vector<std::shared_ptr<NSView>> m_subviews;
    std::vector<NSLayoutConstraint> m_constraints;
    std::function<void()> m_hierarchyDidChange;
    bool m_translatesAutoresizingMask = true;
};

} // namespace platform
