#include "diagnostics/TraceSession.h"

#include "kernel/DeviceWorker.h"
#include "kernel/Names.h"
#include "kernel/SystemEngine.h"

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
    const auto now = Clock::now();
    Trace::end();
    write();
    addUnderWay(now);
    story->finish(now);
    summary.length = std::chrono::duration_cast<std::chrono::milliseconds>(now - beginning);
    file->finish({ { "events", summary.events }, { "lost", summary.lost }, { "ms", summary.length.count() } });
    summary.failure = file->getFailure();
    story.reset();
    file.reset();
    return summary;
}

void TraceSession::addUnderWay(TraceEvents::Time now)
{
    // One that hangs is the one that is looked for.
    if (const auto* engine = Kernel::SystemEngine::getExisting())
        for (const auto& group : engine->getGroupStatus())
            if (group.receiver != Kernel::noComponent)
                story->addUnderWay(group.thread,
                                   Kernel::componentName(group.receiver) + ": " + Kernel::messageName(group.message),
                                   group.since, now);
    for (const auto& worker : Kernel::DeviceWorker::getStatus())
        if (worker.busy)
            story->addUnderWay(worker.name, "job", worker.since, now);
}

} // namespace Diagnostics
