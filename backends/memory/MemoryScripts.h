#pragma once

#include "backends/memory/Ledger.h"
#include "platform/applescript/NSAppleScript.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace backends {

// Scripts as facts: which file holds which handlers, and what each of them answers. Every call is written into the
// ledger as it arrives: script composeMessage("ada@example.org", 5, true).
class MemoryScripts : public platform::NSAppleScripts {
public:
    struct Answer {
        platform::NSAppleEventDescriptor reply {};
        // Not empty: the handler failed.
        platform::Dictionary errorInfo {};
    };
    using Arguments = std::vector<platform::NSAppleEventDescriptor>;
    using Handler = std::function<Answer(Arguments const&)>;

    explicit MemoryScripts(Ledger& ledger)
        : m_ledger(ledger)
    {
    }

    // A script without handlers, or one more handler for it. Loaded scripts have it too.
    void addScript(std::string const& path);
    void addHandler(std::string const& path, std::string const& name, Handler handler);
    // A file that is no script. With an empty text the world does not say why.
    void setBroken(std::string const& path, std::string const& message);
    int loads() const { return m_loads; }

    std::shared_ptr<platform::NSAppleScript> initWithContentsOfURL(
        platform::URL const& url, platform::Dictionary& errorInfo) override;

private:
    class Script;
    // By its name in lower case: names match without regard to case.
    using Handlers = std::map<std::string, Handler>;

    Ledger& m_ledger;
    std::map<std::string, std::shared_ptr<Handlers>> m_scripts;
    std::map<std::string, std::string> m_broken;
    int m_loads = 0;
};

} // namespace backends
