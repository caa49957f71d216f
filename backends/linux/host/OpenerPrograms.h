#pragma once

#include "backends/linux/host/ChildProgram.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/URL.h"

#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace backends {

// The programs of the desktop that open an address with whatever is meant for it. Main thread only.
class OpenerPrograms {
public:
    // In the order in which they are tried, each with what stands before the address.
    using Programs = std::vector<std::vector<std::string>>;
    explicit OpenerPrograms(EventLoop& loop, Programs programs = { { "gio", "open" }, { "xdg-open" } });

    // Tells once, from the loop, that the first of them that could has opened it, or why none has. An opener that waits
    // for the program it starts tells when that has ended.
    void open(platform::URL const& url, std::function<void(std::optional<platform::NSError> const&)> done);

private:
    struct Opening {
        platform::URL url;
        std::function<void(std::optional<platform::NSError> const&)> done {};
        std::size_t next = 0;
        std::string reasons {};
        std::unique_ptr<ChildProgram> child {};
        LoopSource later {};
    };

    void tryNext(std::list<Opening>::iterator opening);
    void finish(std::list<Opening>::iterator opening, std::optional<platform::NSError> const& error);

    EventLoop& m_loop;
    Programs m_programs;
    std::list<Opening> m_openings;
};

} // namespace backends
