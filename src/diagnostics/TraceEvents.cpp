#include "diagnostics/TraceEvents.h"

#include "EngineApi/Catalogue.h"
#include "EngineApi/HostCommands.h"
#include "EngineApi/Remote.h"
#include "EngineApi/ScheduleRecords.h"
#include "kernel/MessageIds.h"
#include "kernel/Names.h"
#include "platform/base/Pubhead.h"
#include "platform/channel/RemoteMessageIds.h"

#include <algorithm>

namespace Diagnostics
{

namespace
{

using Arguments = TraceFile::Arguments;

constexpr const char* threads = "threads";

constexpr auto received = &EngineApi::HostCommandEntry::receivedName;

/** The outcome of what has none at the end of the trace. */
Arguments underWay()
{
    return { { "outcome", "under way" } };
}

std::string pageName(int page)
{
    return Pubhead::pageName(page);
}

std::string remoteName(int what)
{
    return Platform::remoteMessageName(what).toStdString();
}

/** "command 300" for one that nobody knows. */
std::string commandName(int command, const char* EngineApi::HostCommandEntry::*direction)
{
    const std::string name = EngineApi::hostCommand(command).*direction;
    return name.empty() ? "command " + std::to_string(command) : name;
}

/** A timer's expiry and a frame's content say more than the message that brings them. */
std::string messageName(const Kernel::Trace::Numbers& numbers)
{
    const auto [receiver, id, arg1, arg2, page] = numbers;
    if (id == Kernel::MSG_SYS_TIMER)
        return "timer " + std::to_string(arg1);
    const auto name = Kernel::messageName(id).toStdString();
    return id == Kernel::MSG_HOST_EVENT ? name + " " + commandName(arg1, received) : name;
}

std::string hexText(std::int32_t threeBytes)
{
    return juce::String::toHexString(threeBytes).paddedLeft('0', 6).toStdString();
}

const char* outcomeName(int status)
{
    switch (status)
    {
    case EngineApi::scheduleDone:
        return "done";
    case EngineApi::scheduleRefused:
        return "refused";
    default:
        return "failed";
    }
}

} // namespace

TraceEvents::TraceEvents(TraceFile& fileToWrite, Time beginningOfTrace)
    : file(fileToWrite)
    , beginning(beginningOfTrace)
{
}

void TraceEvents::add(const Event& event)
{
    if (event.end < beginning)
        return;
    const auto [first, second, third, fourth, fifth] = event.numbers;
    switch (event.kind)
    {
    case Kind::message:
        return addMessage(event);
    case Kind::job:
        return addJob(event);
    case Kind::block:
        return addHandled(event, "", "block " + hexText(first),
                          { { "bytes", second }, { "attempts", third }, { "verified", fourth != 0 } });
    case Kind::frameSent:
        return begin(event, linkTrack("sent"), commandName(first, &EngineApi::HostCommandEntry::sentName),
                     { { "sequence", second }, { "bytes", third } });
    case Kind::frameResent:
        return addMark(event, linkTrack("sent"), "again", { { "sequence", second } });
    case Kind::frameAcknowledged:
        return end(linkTrack("sent"), event.begin, { { "outcome", "acknowledged" } });
    case Kind::frameGivenUp:
        return end(linkTrack("sent"), event.begin, { { "outcome", "given up" } });
    case Kind::frameReceived:
        return addReceived(event, linkTrack("received"), commandName(first, received),
                           { { "sequence", second }, { "bytes", third } });
    case Kind::confirmationSent:
        return addMark(event, linkTrack("acknowledgements sent"), "acknowledgement", { { "sequence", first } });
    case Kind::switchBegun:
        return begin(
            event, file.track("switches", "request"), pageName(first) + " " + EngineApi::actionName(second),
            { { "page", pageName(first) }, { "action", EngineApi::actionName(second) }, { "automatic", third != 0 } });
    case Kind::switchEnded:
        for (const int page : std::exchange(ordered, {}))
            end(pageTrack(page), event.begin, { { "outcome", "no report" } });
        return end(file.track("switches", "request"), event.begin, { { "outcome", outcomeName(second) } });
    case Kind::orderSent:
        ordered.push_back(first);
        return begin(event, pageTrack(first), EngineApi::switchTypeName(second), Arguments::object());
    case Kind::orderReported:
        return end(pageTrack(first), event.begin, { { "succeeded", second != 0 } });
    case Kind::pageHiding:
        return begin(event, file.track("switches", "view"), "hide " + pageName(first), Arguments::object());
    case Kind::pageShowing:
        return begin(event, file.track("switches", "view"), "show " + pageName(first), Arguments::object());
    case Kind::pageSettled:
        return end(file.track("switches", "view"), event.begin, { { "in front", pageName(first) } });
    case Kind::viewTold:
        return addMark(event, file.track("switches", "view: told"), remoteName(first) + " " + pageName(second));
    case Kind::viewAnswered:
        return addMark(event, file.track("switches", "view: answers"), remoteName(first) + " " + pageName(second));
    case Kind::programState:
        end(programTrack(first), event.begin, Arguments::object());
        if (second != EngineApi::kDisconnect)
            begin(event, programTrack(first), EngineApi::programStateName(second), Arguments::object());
        return;
    case Kind::remoteSent:
        return addSent(event, programTrack(first), remoteName(second),
                       { { "arg1", third }, { "arg2", fourth }, { "went out", fifth != 0 } });
    case Kind::remoteReceived:
        return addReceived(event, programTrack(first), remoteName(second), { { "arg1", third }, { "arg2", fourth } });
    }
}

void TraceEvents::addMessage(const Event& event)
{
    const auto [receiver, id, arg1, arg2, page] = event.numbers;
    const auto component = Kernel::componentName(receiver).toStdString();
    const auto message = messageName(event.numbers);
    Arguments arguments { { "arg1", arg1 }, { "arg2", arg2 } };
    if (const auto name = pageName(page); !name.empty())
        arguments["handler"] = name;
    addHandled(event, message + " to " + component, component + ": " + message, std::move(arguments));
}

void TraceEvents::addJob(const Event& event)
{
    addHandled(event, "job for " + Kernel::Trace::threadName(event.thread).toStdString(), "job",
               { { "key", event.numbers[0] } });
}

void TraceEvents::addHandled(const Event& event, const std::string& cause, std::string name, Arguments arguments)
{
    Slice slice { threadTrack(event.thread), std::move(name), since(event.begin), since(event.end) - since(event.begin),
                  std::move(arguments) };
    if (!cause.empty())
        lead(event.origin, cause, slice);
    file.add(slice);
}

void TraceEvents::addReceived(const Event& event, int track, const std::string& name, Arguments arguments)
{
    Slice source { track, name, since(event.begin), {}, std::move(arguments), TraceFile::Arrow::begins, ++arrows };
    file.add(source);
    file.add({ threadTrack(event.thread), "received " + name, source.at, since(event.end) - source.at,
               Arguments::object(), TraceFile::Arrow::ends, source.arrowNumber });
}

void TraceEvents::addSent(const Event& event, int track, const std::string& name, Arguments arguments)
{
    Slice sending { threadTrack(event.thread),
                    "send " + name,
                    since(event.begin),
                    since(event.end) - since(event.begin),
                    std::move(arguments),
                    TraceFile::Arrow::begins,
                    ++arrows };
    file.add(sending);
    file.add({ track, name, sending.at, {}, Arguments::object(), TraceFile::Arrow::ends, sending.arrowNumber });
}

void TraceEvents::addMark(const Event& event, int track, const std::string& name, Arguments arguments)
{
    Slice slice { track, name, since(event.begin), {}, std::move(arguments) };
    lead(event.origin, name, slice);
    file.add(slice);
}

void TraceEvents::begin(const Event& event, int track, std::string name, Arguments arguments)
{
    end(track, event.begin, Arguments::object());
    open.emplace(track,
                 Phase { { track, std::move(name), since(event.begin), {}, std::move(arguments) }, event.origin });
}

void TraceEvents::end(int track, Time at, const Arguments& outcome)
{
    const auto found = open.find(track);
    if (found == open.end())
        return;
    auto& [slice, origin] = found->second;
    lead(origin, slice.name, slice); // only now: both ends of the arrow are there, or none
    slice.duration = since(at) - slice.at;
    slice.arguments.update(outcome);
    file.add(slice);
    open.erase(found);
}

void TraceEvents::lead(const Origin& origin, const std::string& cause, Slice& slice)
{
    // A message may have been posted before the trace, or have a trace before this one on it.
    if (origin.thread == Kernel::Trace::noThread || origin.at < beginning)
        return;
    slice.arrow = TraceFile::Arrow::ends;
    slice.arrowNumber = ++arrows;
    const auto at = since(origin.at);
    if (at < slice.at)
        slice.arguments["waitedUs"] = std::chrono::duration<double, std::micro>(slice.at - at).count();
    file.add({ threadTrack(origin.thread),
               cause,
               at,
               {},
               Arguments::object(),
               TraceFile::Arrow::begins,
               slice.arrowNumber });
}

void TraceEvents::addLoss(std::uint64_t count, Time now)
{
    file.add({ file.track("trace", "lost"), std::to_string(count) + " events lost", since(now) });
}

void TraceEvents::addUnderWay(const juce::String& thread, const juce::String& name, Time begin, Time now)
{
    if (begin < now)
        file.add({ file.track(threads, thread.toStdString()), name.toStdString(), since(begin),
                   since(now) - since(begin), underWay() });
}

void TraceEvents::finish(Time now)
{
    while (!open.empty())
        end(open.begin()->first, now, underWay());
}

std::chrono::nanoseconds TraceEvents::since(Time time) const
{
    return std::max(time - beginning, Time::duration::zero());
}

int TraceEvents::threadTrack(Kernel::Trace::Thread thread)
{
    if (threadTracks.size() <= thread)
        threadTracks.resize(thread + 1u);
    auto& track = threadTracks[thread];
    if (track == 0)
        track = file.track(threads, Kernel::Trace::threadName(thread).toStdString());
    return track;
}

int TraceEvents::linkTrack(const char* direction)
{
    return file.track("link to the microcontroller", direction);
}

int TraceEvents::pageTrack(int page)
{
    return file.track("pages", pageName(page));
}

int TraceEvents::programTrack(int program)
{
    return file.track("programs", program == Pubhead::AppUnknown ? "all" : Pubhead::appTypeName(program));
}

} // namespace Diagnostics
