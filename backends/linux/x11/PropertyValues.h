#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <xcb/xcb.h>

namespace backends {

// The values of a property of 32-bit items; empty when it is absent or of another form. Valid as long as the reply.
std::span<std::uint32_t const> wordsOf(xcb_get_property_reply_t const* reply);

// Absent when there is none.
std::optional<std::uint32_t> firstWordOf(xcb_get_property_reply_t const* reply);

// A place or a length on the screen. Whatever anybody writes, sums of a few stay within 32 bits.
std::int32_t pixelsIn(std::uint32_t word);

// The bytes of a property of 8-bit items; empty when it is absent or of another form.
std::string bytesOf(xcb_get_property_reply_t const* reply);

// Latin-1, the encoding of properties of type STRING (ICCCM 2.7.1), as UTF-8.
std::string textFromLatin1(std::string const& bytes);

} // namespace backends
