#pragma once

#include <cstdint>

// The codes of Apple events, four letters in one number, and the error numbers that scripts and events end with.
namespace platform {

using FourCharCode = std::uint32_t;

constexpr FourCharCode fourCharCode(char const (&letters)[5])
{
    FourCharCode code = 0;
    for (int i = 0; i < 4; ++i)
        code = code << 8 | static_cast<unsigned char>(letters[i]);
    return code;
}

// Calling a handler of a script by its name (ASRegistry.h).
constexpr FourCharCode kASAppleScriptSuite = fourCharCode("ascr");
constexpr FourCharCode kASSubroutineEvent = fourCharCode("psbr");
constexpr FourCharCode keyASSubroutineName = fourCharCode("snam");
constexpr FourCharCode keyDirectObject = fourCharCode("----");
// What an event says of itself (AEDataModel.h).
constexpr FourCharCode keyAddressAttr = fourCharCode("addr");
constexpr FourCharCode keyReturnIDAttr = fourCharCode("rtid");
constexpr FourCharCode keyTransactionIDAttr = fourCharCode("tran");
constexpr std::int16_t kAutoGenerateReturnID = -1;
constexpr std::int32_t kAnyTransactionID = 0;

// Kinds of descriptors (AEDataModel.h).
constexpr FourCharCode typeNull = fourCharCode("null");
constexpr FourCharCode typeUnicodeText = fourCharCode("utxt");
constexpr FourCharCode typeSInt32 = fourCharCode("long");
constexpr FourCharCode typeIEEE64BitFloatingPoint = fourCharCode("doub");
constexpr FourCharCode typeBoolean = fourCharCode("bool");
constexpr FourCharCode typeAEList = fourCharCode("list");
constexpr FourCharCode typeAppleEvent = fourCharCode("aevt");

// (MacErrors.h)
constexpr std::int32_t fnfErr = -43;
constexpr std::int32_t userCanceledErr = -128;
constexpr std::int32_t errAEEventNotHandled = -1708;
constexpr std::int32_t errAETimeout = -1712;
constexpr std::int32_t errOSASystemError = -1750;

} // namespace platform
