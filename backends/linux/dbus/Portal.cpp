#include "backends/linux/dbus/Portal.h"

#include "platform/foundation/UUID.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <unistd.h>
#include <utility>

namespace backends {

using platform::NSError;
using platform::Value;

namespace {

constexpr auto service = "org.freedesktop.portal.Desktop";
constexpr auto object = "/org/freedesktop/portal/desktop";
constexpr auto requestInterface = "org.freedesktop.portal.Request";

std::string interfaceNamed(std::string const& name) { return "org.freedesktop.portal." + name; }

// In a sandbox the portal knows the app by the sandbox.
bool isSandboxed() { return access("/.flatpak-info", F_OK) == 0; }

} // namespace

platform::Result<std::unique_ptr<Portal>> Portal::connect(
    EventLoop& loop, std::string const& busAddress, std::string const& appID)
{
    auto bus = Bus::connect(loop, busAddress);
    if (!bus)
        return bus.error();
    return std::unique_ptr<Portal>(new Portal(bus.take(), isSandboxed() ? std::string() : appID));
}

Portal::Portal(std::unique_ptr<Bus> bus, std::string appID)
    : m_bus(std::move(bus))
    , m_appID(std::move(appID))
{
    // One rule for all requests, before the first is made: an answer may come before the request has been named.
    m_responses = m_bus->whenSignal({ service, {}, requestInterface, "Response" },
        fromOwner([this](auto const& response) { handleResponse(response); }));
    m_ownerChanges = m_bus->whenOwnerChanges(
        service, [this](auto const& before, auto const& after) { ownerDidChange(before, after); });
    m_lost = m_bus->whenLost([this] {
        m_isLost = true;
        ownerDidChange(m_owner, {});
    });
    m_ownerQuestion = m_bus->askOwner(service, [this](auto const& owner) {
        if (m_owner.empty())
            m_owner = owner;
    });
    registerApp();
}

Portal::~Portal() = default;

void Portal::setObserver(std::function<void()> didGo, std::function<void()> didCome)
{
    m_didGo = std::move(didGo);
    m_didCome = std::move(didCome);
}

void Portal::registerApp()
{
    if (m_appID.empty())
        return;
    m_isRegistering = true;
    // Older portals do not know it, and one that has been told already refuses: neither matters.
    m_registration = m_bus->call({ service, object, "org.freedesktop.host.portal.Registry", "Register" }, "sa{sv}",
        { m_appID, platform::Dictionary {} }, [this](auto const&) { m_isRegistering = false; });
}

Bus::Handler Portal::fromOwner(Bus::Handler heard)
{
    return [this, heard = std::move(heard)](BusMessage const& signal) {
        if (!m_owner.empty() && signal.sender == m_owner)
            heard(signal);
    };
}

std::string Portal::makeToken()
{
    auto token = "paneweld" + platform::UUID::random().uuidString();
    std::erase(token, '-');
    return token;
}

Portal::Request Portal::ask(std::string const& interface, std::string const& method, std::string const& signature,
    platform::List arguments, platform::Dictionary options, std::function<void(Response const&)> answered)
{
    auto const token = makeToken();
    options["handle_token"] = token;
    arguments.emplace_back(std::move(options));
    m_pending[token].answered = std::move(answered);
    auto call = m_bus->call({ service, object, interfaceNamed(interface), method }, signature + "a{sv}", arguments,
        [this, token](BusMessage const& answer) {
            if (answer.isError()) {
                finish(token, { Ended::Failed, {}, answer.error });
                return;
            }
            auto const pending = m_pending.find(token);
            auto const path = answer.argument(0);
            if (pending != m_pending.end() && path.asText())
                pending->second.path = *path.asText();
        });
    Request request;
    if (auto const pending = m_pending.find(token); pending != m_pending.end()) {
        pending->second.call = std::move(call);
        request.m_portal = this;
        request.m_token = token;
    }
    return request;
}

void Portal::handleResponse(BusMessage const& response)
{
    // The path ends with the token, unless the portal is an old one that chose a name of its own.
    auto const found = std::find_if(m_pending.begin(), m_pending.end(), [&](auto const& pending) {
        return response.path == pending.second.path || response.path.ends_with("/" + pending.first);
    });
    if (found == m_pending.end())
        return;
    auto const code = response.argument(0).asUInt32();
    auto const results = response.argument(1);
    if (!code || !results.asDictionary())
        finish(found->first, { Ended::Failed, {}, "a response that cannot be read" });
    else
        finish(
            found->first, { *code <= 1 ? static_cast<Ended>(*code) : Ended::Otherwise, *results.asDictionary(), {} });
}

void Portal::finish(std::string const& token, Response const& response)
{
    // Out of the table first: the answer may lead to another question. Held to the end, with what it was called by.
    auto const done = m_pending.extract(token);
    if (done)
        done.mapped().answered(response);
}

void Portal::takeBack(std::string const& token)
{
    auto const pending = m_pending.extract(token);
    if (pending && !pending.mapped().path.empty())
        closeObject(requestInterface, pending.mapped().path);
}

void Portal::ownerDidChange(std::string const& before, std::string const& after)
{
    m_owner = after;
    if (!before.empty() || m_isLost) {
        // Their answers never come.
        m_pending.clear();
        if (m_didGo)
            m_didGo();
    }
    if (after.empty())
        return;
    // A portal that our own call has started is being told; any other is a program that does not know us.
    if (!m_isRegistering || !before.empty())
        registerApp();
    if (m_didCome)
        m_didCome();
}

BusSlot Portal::askVersion(
    std::string const& interface, std::function<void(platform::Result<std::uint32_t> const&)> answered)
{
    return m_bus->getProperty({ service, object, interfaceNamed(interface), "version" },
        [answered = std::move(answered)](BusMessage const& answer) {
            auto const version = answer.argument(0).asUInt32();
            if (version)
                answered(*version);
            else
                answered(NSError { "Portal", 1, answer.isError() ? answer.error : "its version is no number" });
        });
}

BusSlot Portal::whenSignal(std::string const& interface, std::string const& signal, Bus::Handler heard)
{
    return m_bus->whenSignal({ service, object, interfaceNamed(interface), signal }, fromOwner(std::move(heard)));
}

BusSlot Portal::whenObjectSignals(std::string const& interface, std::string const& signal, Bus::Handler heard)
{
    return m_bus->whenSignal({ service, {}, interface, signal }, fromOwner(std::move(heard)));
}

void Portal::closeObject(std::string const& interface, std::string const& path)
{
    m_bus->send({ service, path, interface, "Close" }, "", {});
}

std::string portalWindowHandle(std::optional<std::uint32_t> xid)
{
    std::array<char, 16> text {};
    if (xid)
        std::snprintf(text.data(), text.size(), "x11:%x", *xid);
    return text.data();
}

Portal::Request::Request(Request&& other) noexcept
    : m_portal(std::exchange(other.m_portal, nullptr))
    , m_token(std::move(other.m_token))
{
}

Portal::Request& Portal::Request::operator=(Request&& other) noexcept
{
    if (this != &other) {
        end();
        m_portal = std::exchange(other.m_portal, nullptr);
        m_token = std::move(other.m_token);
    }
    return *this;
}

void Portal::Request::end()
{
    if (auto* const portal = std::exchange(m_portal, nullptr))
        portal->takeBack(m_token);
}

} // namespace backends
