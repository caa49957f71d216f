#include "iOS/ResizePipelines.h"

#include <utility>

namespace paneweld {

ResizePipelines::ResizePipelines(Sink sink)
    : m_sink(std::move(sink))
{
}

void ResizePipelines::receiveRequest(ResizeBrainstormWindow const& request)
{
    send(m_requests, request, request, m_flags.at(request.windowIdentifier));
}

void ResizePipelines::receiveFlag(IsWindowAnimating const& flag)
{
    // A copy, which the sink cannot change by what it sends.
    auto const request = m_requests.at(flag.windowIdentifier);
    send(m_flags, flag, request, flag);
}

template<typename T, typename U>
void ResizePipelines::send(
    Stretches<T>& stream, U const& value, ResizeBrainstormWindow const& request, Flag const& flag)
{
    if (!takes(request, flag)) {
        stream.assign(value);
        return;
    }
    auto const generation = m_generation;
    auto const& id = request.windowIdentifier;
    stream.assignUpTo(id, value);
    m_sink(request);
    if (generation == m_generation)
        stream.assignBehind(id, value);
}

bool ResizePipelines::takes(ResizeBrainstormWindow const& request, Flag const& flag)
{
    if (!flag || flag->isAnimating || flag->windowIdentifier != request.windowIdentifier)
        return false;
    auto* const pipeline = pipelineOf(request.windowIdentifier);
    if (!pipeline || (pipeline->generation == m_generation && pipeline->last == request))
        return false;
    pipeline->last = request;
    pipeline->generation = m_generation;
    return true;
}

ResizePipelines::Pipeline* ResizePipelines::pipelineOf(std::string const& id)
{
    if (!m_latest || m_latest->first != id) {
        auto const found = m_pipelines.find(id);
        if (found == m_pipelines.end())
            return nullptr;
        m_latest = &*found;
    }
    return &m_latest->second;
}

void ResizePipelines::rebuild(WindowAction const& change, ResizeBrainstormWindow const& current)
{
    m_latest = nullptr;
    if (change.action == WindowAction::Case::WillShow)
        m_pipelines.try_emplace(change.windowIdentifier);
    else
        m_pipelines.erase(change.windowIdentifier);
    ++m_generation;
    m_requests.assign(current);
    m_flags.assign(std::nullopt);
}

} // namespace paneweld
