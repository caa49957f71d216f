#pragma once

#include "iOS/IsWindowAnimating.h"
#include "iOS/ResizeBrainstormWindow.h"
#include "iOS/Stretches.h"
#include "iOS/WindowAction.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>

namespace paneweld {

// The resize pipelines of all shown windows, as many as there may be, at the cost of one. A pipeline pairs the latest
// request with the latest flag, lets the pair through when both are about its window and the flag is down, and drops
// a request that equals the one before it. All hear the same two streams in the order of their ids and begin anew
// together, so they know the same at all times, but for two things that are kept here: what each of them let through,
// and what a send from inside a delivery leaves behind, namely the newer value up to the pipeline that delivers, and
// behind it the older one, which comes there last. Main thread only.
class ResizePipelines {
public:
    // Where requests come out. It may send again, and show and close windows.
    using Sink = std::function<void(ResizeBrainstormWindow const&)>;

    explicit ResizePipelines(Sink sink);

    // A value of either stream goes through all pipelines. It stays what it is until it is through, whatever the sink
    // sends.
    void receiveRequest(ResizeBrainstormWindow const& request);
    void receiveFlag(IsWindowAnimating const& flag);

    // Ends every pipeline and builds one for each window that is shown after this change. A new one knows the current
    // request and no flag. What is on its way through the old ones goes no further.
    void rebuild(WindowAction const& change, ResizeBrainstormWindow const& current);

private:
    using Flag = std::optional<IsWindowAnimating>;

    struct Pipeline {
        // The request let through last, if that was in the present generation.
        ResizeBrainstormWindow last {};
        std::uint64_t generation = 0;
    };

    // Gives a value to every pipeline; on the way the pair goes out at the one that it opens, if it opens one.
    template<typename T, typename U>
    void send(Stretches<T>& stream, U const& value, ResizeBrainstormWindow const& request, Flag const& flag);
    // Whether the window's pipeline lets the request through. It counts as let through then.
    bool takes(ResizeBrainstormWindow const& request, Flag const& flag);
    // Null for a window that is not shown.
    Pipeline* pipelineOf(std::string const& id);

    using Pipelines = std::unordered_map<std::string, Pipeline>;

    Sink m_sink;
    Pipelines m_pipelines;
    // One window is asked again and again. Null from a rebuild to the next question.
    Pipelines::value_type* m_latest = nullptr;
    // Goes up at each rebuild, so that a rebuild need not visit the pipelines.
    std::uint64_t m_generation = 1;
    Stretches<ResizeBrainstormWindow> m_requests;
    Stretches<Flag> m_flags;
};

} // namespace paneweld
