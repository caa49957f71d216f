#pragma once

#include "platform/appkit/NSView.h"

namespace platform {

enum class VisualEffectMaterial { None = 0, UnderWindowBackground = 21 };
enum class VisualEffectState { FollowsWindowActiveState = 0, Active = 1, Inactive = 2 };

// The blurred, tinted ground behind a window's content. How much of it is seen is up to the backend's compositor.
class NSVisualEffectView : public NSView {
public:
    VisualEffectMaterial material() const { return m_material; }
    void setMaterial(VisualEffectMaterial material) { m_material = material; }
    VisualEffectState state() const { return m_state; }
    void setState(VisualEffectState state) { m_state = state; }

private:
    VisualEffectMaterial m_material = VisualEffectMaterial::None;
    VisualEffectState m_state = VisualEffectState::FollowsWindowActiveState;
};

} // namespace platform
