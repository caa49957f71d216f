#include "platform/runtime/AssociatedObjects.h"

namespace platform {

void setAssociatedObject(NSObject& object, AssociationKey const& key, Value value, AssociationPolicy)
{
    if (auto const tag = value.asObject()) {
        if (auto copy = tag->copyWithZone())
            value = Value(std::move(copy));
    }
    // The old value ends outside the lock: its destructor may ask this object for a tag.
    std::lock_guard const lock(object.m_associationsMutex);
    std::swap(object.m_associations[&key], value);
}

Value associatedObject(NSObject const& object, AssociationKey const& key)
{
    std::lock_guard const lock(object.m_associationsMutex);
    auto const found = object.m_associations.find(&key);
    return found == object.m_associations.end() ? Value() : found->second;
}

} // namespace platform
