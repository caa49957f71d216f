#pragma once

#include "platform/runtime/Class.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace paneweld {

// The tag of a host window: which window it is, of what kind, and its title for people. The host writes it as JSON
// text into the window's title; the plug-in reads it there and puts the human title back. Immutable; texts are UTF-8.
class WindowIdentifier : public platform::NSObject {
public:
    // initWithId:type:localizedTitle: The type is carried as it is, known or not.
    static std::shared_ptr<WindowIdentifier> create(std::string id, std::string type, std::string localizedTitle);
    static std::shared_ptr<WindowIdentifier> brainstorm(std::string id, std::string localizedTitle);
    static std::shared_ptr<WindowIdentifier> iOSApp(std::string id, std::string localizedTitle);
    static std::shared_ptr<WindowIdentifier> onboarding(std::string id, std::string localizedTitle);
    static std::shared_ptr<WindowIdentifier> settings(std::string id, std::string localizedTitle);

    // Fatal: an identifier without its three texts makes no sense.
    [[noreturn]] static void init();

    // Reads JSON text (RFC 8259, with one trailing comma allowed): an object with the text members "id", "type" and
    // "localized_title"; others are ignored. Null on any failure.
    static std::shared_ptr<WindowIdentifier> from(std::string_view text);

    std::string const& id() const { return m_id; }
    std::string const& type() const { return m_type; }
    std::string const& localizedTitle() const { return m_localizedTitle; }

    bool isBrainstorm() const;
    bool isIOSApp() const;
    bool isOnboarding() const;
    bool isSettings() const;

    // Compact JSON with sorted keys and escaped slashes. The localised title as it stands when a text is not UTF-8.
    std::string encoded() const;

    // isEqualTo: Same id and same type; the title takes no part. False for anything that is not an identifier of the
    // receiver's own class.
    bool isEqualTo(platform::Value const& other) const;

    // copyWithZone: Shares no text with this one.
    std::shared_ptr<platform::NSObject> copyWithZone() const override;
    platform::Class const* classDescription() const override { return &runtimeClass(); }

    // "QuorvelWindowIdentifier".
    static platform::Class const& runtimeClass();

protected:
    WindowIdentifier(std::string&& id, std::string&& type, std::string&& localizedTitle);

    // A new instance of the receiver's own class, for copying.
    virtual std::shared_ptr<WindowIdentifier> newInstance(
        std::string id, std::string type, std::string localizedTitle) const;

private:
    bool isOfReceiversClass(WindowIdentifier const& other) const;

    std::string m_id;
    std::string m_type;
    std::string m_localizedTitle;
};

} // namespace paneweld
