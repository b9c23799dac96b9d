#include "bench/replay/Follower.h"

#include <cassert>

namespace Replay
{

using namespace Platform;

namespace
{

Follower* only = nullptr;

constexpr int messageThread = 1;

juce::String juceText(std::string_view text)
{
    return juce::String::fromUTF8(text.data(), static_cast<int>(text.size()));
}

} // namespace

Follower::Follower(Scheduler& schedulerToUse, const RecordingFiles& filesToFollow, std::atomic<std::size_t>& place)
    : scheduler(schedulerToUse)
    , files(filesToFollow)
    , begin(schedulerToUse.now())
    , next(place)
{
    assert(only == nullptr);
    only = this;
    setActive(this);
}

Follower& Follower::get()
{
    return *only;
}

std::chrono::milliseconds Follower::timeOfDay() const
{
    return std::chrono::milliseconds(files.timeOfDay) +
           std::chrono::duration_cast<std::chrono::milliseconds>(scheduler.now() - begin);
}

void Follower::follow()
{
    for (; next < files.gap; ++next)
    {
        const auto& record = files.records[next];
        if (record.step == Step::end)
            return;
        letTimePass(begin + std::chrono::microseconds(record.time));
        if (different.empty())
            followOne(record);
        if (!different.empty())
            return;
    }
    letTimePass(scheduler.now());
}

void Follower::letTimePass(Clock::time_point end)
{
    scheduler.runUntil(end, [this] { return different.empty(); });
}

void Follower::followOne(const Record& record)
{
    const auto* info = infoOf(record.step);
    if (info == nullptr)
        return differ("a step that this version does not know");
    if (record.step == Step::touch || record.step == Step::pointer)
    {
        // Told by the engine's own handler.
        deliver(record);
        letTimePass(scheduler.now());
        if (different.empty())
            letGoOn(record);
    }
    else if (info->role == StepRole::input || record.step == Step::callBegun)
        deliver(record);
    else if (info->role != StepRole::about)
        letGoOn(record);
}

Lane& Follower::laneOf(const Record& record)
{
    if (record.thread == messageThread)
        return scheduler.messageThread();
    auto& lane = lanes[record.thread];
    if (lane == nullptr)
        lane = std::make_unique<Lane>(files.threadName(record));
    return *lane;
}

void Follower::deliver(const Record& record)
{
    auto& lane = laneOf(record);
    if (!lane.isIdle())
    {
        const auto* meeting = meetingOf(lane.getFiber());
        return differ("the thread still has to do: " +
                      (meeting != nullptr ? describe(meeting->step, meeting->fields) : "what it waits for"));
    }
    lane.post([this, &record] { call(record); });
}

void Follower::call(const Record& record)
{
    FieldReader reader(record.fields);
    const auto number = [&] { return static_cast<juce::int32>(reader.number()); };
    switch (record.step)
    {
    case Step::portBytes:
    case Step::portBack:
    {
        const auto found = reached.ports.find(std::string(reader.bytes()));
        if (found == reached.ports.end())
            return differ("the port is not open");
        if (record.step == Step::portBack)
            return found->second->onDeviceBack();
        const auto bytes = reader.bytes();
        return found->second->onReceive(bytes.data(), static_cast<int>(bytes.size()));
    }
    case Step::timer:
    {
        const auto found = reached.timers.find(reader.number());
        return found == reached.timers.end() ? differ("there is no such timer")
                                             : found->second->timerCallback(number());
    }
    case Step::touch:
        return reached.touched ? reached.touched(static_cast<WindowHandle>(reader.number()))
                               : differ("nobody watches for touches");
    case Step::pointer:
    {
        const auto found = reached.windows.find(std::string(reader.bytes()));
        if (found == reached.windows.end())
            return differ("there is no such window");
        const int x = number(), y = number();
        return found->second({ x, y }, number() != 0);
    }
    case Step::callBegun:
    {
        if (reached.calls.empty())
            return differ("nothing is to be called");
        const auto called = std::move(reached.calls.front());
        reached.calls.pop_front();
        return called();
    }
    default:
        break;
    }
    if (reached.receiver == nullptr)
        return differ("the channel is not open");
    if (record.step == Step::presence)
    {
        const int program = number();
        return reached.receiver->onPresence(program, number() != 0);
    }
    if (record.step == Step::broadcast)
        return reached.receiver->onBroadcast(juceText(reader.bytes()));
    if (record.step == Step::windowMessage)
    {
        const auto message = number(), wParam = number();
        return reached.receiver->onWindowMessage(message, wParam, number());
    }
    auto message = RemoteMessage::obtain();
    message->appType = number();
    message->what = number();
    message->arg1 = number();
    message->arg2 = number();
    std::string error;
    message->bundle = bundleOf(reader.bytes(), error);
    if (!error.empty())
        return differ(error);
    reached.receiver->onRemoteMessage(std::move(message));
}

Fiber* Follower::fiberOf(const Record& record) const
{
    if (record.thread == messageThread)
        return scheduler.messageThread().getFiber();
    const auto lane = lanes.find(record.thread);
    return lane != lanes.end() ? lane->second->getFiber() : scheduler.find(files.threadName(record));
}

Follower::Meeting* Follower::meetingOf(Fiber* fiber)
{
    const auto found = meetings.find(fiber);
    return found == meetings.end() || found->second.granted ? nullptr : &found->second;
}

void Follower::letGoOn(const Record& record)
{
    auto* fiber = fiberOf(record);
    auto* meeting = meetingOf(fiber);
    // In the recording its pause was over earlier. A thread may pause again and again until something is so.
    constexpr int mostPauses = 100;
    for (int pauses = 0; meeting == nullptr && sleepers.contains(fiber) && pauses < mostPauses; ++pauses)
    {
        scheduler.wake(fiber);
        letTimePass(scheduler.now());
        meeting = meetingOf(fiber);
    }
    if (!different.empty())
        return;
    if (meeting == nullptr)
        return differ("the thread does nothing");
    const bool same = meeting->step == record.step &&
                      meeting->fields == (meeting->wantsAnswer ? record.asked() : std::string_view(record.fields));
    if (!same)
        return differ(describe(meeting->step, meeting->fields));
    meeting->answer = meeting->wantsAnswer ? record.answer() : std::string_view();
    meeting->granted = true;
    scheduler.wake(fiber);
}

std::string Follower::meet(Step step, const std::string& fields, bool wantsAnswer)
{
    auto* self = scheduler.current();
    assert(self != nullptr);
    auto& meeting = meetings[self] = { step, fields, wantsAnswer, {}, false };
    while (!meeting.granted)
        scheduler.wait({});
    auto answer = std::move(meeting.answer);
    meetings.erase(self);
    return answer;
}

void Follower::enter(Step step, const Fields& fields)
{
    meet(step, fields.bytes(), false);
}

std::int64_t Follower::answer(Step step, Fields& asked, std::int64_t)
{
    return FieldReader(meet(step, asked.bytes(), true)).number();
}

std::string Follower::answer(Step step, Fields& asked, std::string)
{
    return std::string(FieldReader(meet(step, asked.bytes(), true)).bytes());
}

void Follower::sleep(Clock::duration time)
{
    auto* self = scheduler.current();
    sleepers.insert(self);
    scheduler.wait(scheduler.now() + time);
    sleepers.erase(self);
}

void Follower::differ(const std::string& what)
{
    if (different.empty())
        different = what;
}

} // namespace Replay
