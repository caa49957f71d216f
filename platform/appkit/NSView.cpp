#include "platform/appkit/NSView.h"

#include "platform/appkit/NSDraggingInfo.h"

#include <algorithm>

namespace platform {

void NSLayoutConstraint::activateConstraints(std::vector<NSLayoutConstraint> constraints)
{
    for (auto& constraint : constraints) {
        if (auto const view = constraint.first.view.lock())
            view->m_constraints.push_back(std::move(constraint));
    }
}

void NSView::setWantsLayer(bool wantsLayer)
{
    if (wantsLayer == this->wantsLayer())
        return;
    m_layer = wantsLayer ? std::make_unique<CALayer>() : nullptr;
}

void NSView::addSubview(std::shared_ptr<NSView> view, ViewPosition position, std::shared_ptr<NSView> const& relativeTo)
{
    auto place = position == ViewPosition::Below ? m_subviews.begin() : m_subviews.end();
    if (auto const found = std::find(m_subviews.begin(), m_subviews.end(), relativeTo); found != m_subviews.end())
        place = position == ViewPosition::Below ? found : found + 1;
    m_subviews.insert(place, std::move(view));
    if (m_hierarchyDidChange)
        m_hierarchyDidChange();
}

NSView& NSView::topMost()
{
    // The only views laid over others here cover them whole.
    return m_subviews.empty() ? *this : m_subviews.back()->topMost();
}

NSDragOperation NSView::draggingEntered(NSDraggingInfo&) { return NSDragOperation::None; }

NSDragOperation NSView::reportDraggingEntered(NSDraggingInfo& info) { return topMost().draggingEntered(info); }

NSLayoutAnchor NSView::anchor(LayoutAttribute attribute)
{
    return { std::static_pointer_cast<NSView>(shared_from_this()), attribute };
}

} // namespace platform
