#pragma once

#include "platform/runtime/NSObject.h"

#include <cstdint>

namespace platform {

// A private key: its address is what counts, so each is a static of its user.
class AssociationKey {
public:
    AssociationKey() = default;
    AssociationKey(AssociationKey const&) = delete;
    AssociationKey& operator=(AssociationKey const&) = delete;
};

enum class AssociationPolicy : std::uintptr_t { Copy = 0x303 }; // OBJC_ASSOCIATION_COPY: atomic, and a copy is kept

// Tags an object with a value, for as long as the object lives; a null value takes the tag away. Objects are copied
// when they can be. Any thread.
void setAssociatedObject(NSObject& object, AssociationKey const& key, Value value, AssociationPolicy policy);
// The tag, or a null value.
Value associatedObject(NSObject const& object, AssociationKey const& key);

} // namespace platform
