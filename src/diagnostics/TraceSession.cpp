#include "diagnostics/TraceSession.h"

namespace Diagnostics
{

using Kernel::Trace;
using Platform::Clock;

TraceSession::~TraceSession()
{
    stop();
}

std::string TraceSession::begin(int descriptor, std::chrono::seconds length)
{
    if (isOn())
        return "a trace is being taken already";
    auto opened = std::make_unique<TraceFile>(descriptor);
    if (!opened->getFailure().empty())
        return opened->getFailure();
    beginning = Clock::now();
    if (!Trace::begin())
        return "a trace is being taken already";
    deadline = beginning + length;
    summary = {};
    file = std::move(opened);
    story = std::make_unique<TraceEvents>(*file, beginning);
    return "";
}

void TraceSession::write()
{
    Trace::take(taken);
    for (const auto& event : taken)
        story->add(event);
    summary.events += taken.size();
    const auto lost = Trace::countLost();
    if (lost > summary.lost)
        story->addLoss(lost - summary.lost, Clock::now());
    summary.lost = lost;
    taken.clear();
    file->flush();
}

std::optional<TraceSession::Summary> TraceSession::poll(TraceEvents::Time now)
{
    if (!isOn())
        return {};
    write();
    if (file->getFailure().empty() && now < deadline)
        return {};
    return stop();
}

TraceSession::Summary TraceSession::stop()
{
    if (!isOn())
        return {};
    Trace::end();
    write();
    const auto now = Clock::now();
    story->finish(now);
    summary.length = std::chrono::duration_cast<std::chrono::milliseconds>(now - beginning);
    file->finish({ { "events", summary.events }, { "lost", summary.lost }, { "ms", summary.length.count() } });
    summary.failure = file->getFailure();
    story.reset();
    file.reset();
    return summary;
}

} // namespace Diagnostics
