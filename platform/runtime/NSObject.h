#pragma once

#include "platform/foundation/Value.h"

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>

namespace platform {

class AssociationKey;
class Class;
enum class AssociationPolicy : std::uintptr_t;

// The root of everything that a host can hold, copy, tag, or talk to by name.
class NSObject : public std::enable_shared_from_this<NSObject> {
public:
    NSObject() = default;
    virtual ~NSObject() = default;
    NSObject(NSObject const&) = delete;
    NSObject& operator=(NSObject const&) = delete;

    // A copy that shares nothing with this object, or null where a kind cannot be copied.
    virtual std::shared_ptr<NSObject> copyWithZone() const { return nullptr; }

    // The exported class, whose selectors can be performed. Null for objects that are not exported.
    virtual Class const* classDescription() const { return nullptr; }

private:
    friend void setAssociatedObject(NSObject&, AssociationKey const&, Value, AssociationPolicy);
    friend Value associatedObject(NSObject const&, AssociationKey const&);

    mutable std::mutex m_associationsMutex;
    std::map<void const*, Value> m_associations;
};

} // namespace platform
