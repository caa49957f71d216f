#pragma once

#include "iOS/ResizePipelines.h"
#include "platform/combine/CombineLatest.h"
#include "platform/combine/Filter.h"
#include "platform/combine/Map.h"
#include "platform/combine/RemoveDuplicates.h"

#include <set>
#include <string>
#include <utility>
#include <vector>

// The resize pipelines in so many words: a chain of operators for each shown window, all of them torn down and built
// again at every change. What every faster way has to do just like it.
class PlainResizePipelines {
public:
    using Request = paneweld::ResizeBrainstormWindow;
    using Flag = paneweld::IsWindowAnimating;

    PlainResizePipelines(
        platform::Publisher<Request> requests, platform::Publisher<Flag> flags, paneweld::ResizePipelines::Sink sink)
        : m_requests(std::move(requests))
        , m_flags(std::move(flags))
        , m_sink(std::move(sink))
    {
    }

    void rebuild(paneweld::WindowAction const& change)
    {
        if (change.action == paneweld::WindowAction::Case::WillShow)
            m_identifiers.insert(change.windowIdentifier);
        else
            m_identifiers.erase(change.windowIdentifier);
        m_subscriptions.clear();
        for (auto const& id : m_identifiers)
            m_subscriptions.push_back(makePipeline(id));
    }

private:
    platform::Cancellable makePipeline(std::string const& id) const
    {
        using Pair = std::pair<Request, Flag>;
        return platform::combineLatest(m_requests, m_flags)
            .then(platform::filter<Pair>([id](Pair const& pair) {
                return pair.first.windowIdentifier == id && pair.second.windowIdentifier == id;
            }))
            .then(platform::filter<Pair>([](Pair const& pair) { return !pair.second.isAnimating; }))
            .then(platform::map<Request, Pair>([](Pair const& pair) { return pair.first; }))
            .then(platform::removeDuplicates<Request>())
            .sink(m_sink);
    }

    platform::Publisher<Request> m_requests;
    platform::Publisher<Flag> m_flags;
    paneweld::ResizePipelines::Sink m_sink;
    std::set<std::string> m_identifiers;
    std::vector<platform::Cancellable> m_subscriptions;
};
