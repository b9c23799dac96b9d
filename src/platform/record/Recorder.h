#pragma once

#include "platform/record/Observer.h"
#include "platform/record/Recording.h"

#include <atomic>

namespace Platform
{

/**
    Who is told of every step between the engine and everything around it: a recorder, or in its place a replay, which
    answers as the recorded outside did and lets each thread go on in the recorded order. Without one a step costs a look
    at a flag. Any thread.
*/
class Recorder
{
public:
    virtual ~Recorder() = default;

    /** Null when nothing is recorded, and for an observer. */
    static Recorder* active()
    {
        auto* recorder = current.load(std::memory_order_acquire);
        return recorder != nullptr && !Observer::isHere() ? recorder : nullptr;
    }
    /** Before any other thread runs, or after all have ended. */
    static void setActive(Recorder* recorder) { current.store(recorder, std::memory_order_release); }

    /** A step; nothing else is one until `leave`. */
    virtual void enter(Step step, const Fields& fields) = 0;
    virtual void leave() = 0;
    /** A step with an answer: the fields of what is asked, and what the outside answers here. What counts as its answer. */
    virtual std::int64_t answer(Step step, Fields& asked, std::int64_t own) = 0;
    /** The same for bytes. */
    virtual std::string answer(Step step, Fields& asked, std::string own) = 0;
    /** The engine is told to end: what follows is no step any more. */
    virtual void finish() = 0;

private:
    static inline std::atomic<Recorder*> current { nullptr };
};

/** The step, and what follows in the scope, are one. */
class RecordedSection
{
public:
    template <typename... Values>
    explicit RecordedSection(Step step, const Values&... values)
        : recorder(Recorder::active())
    {
        if (recorder != nullptr)
            recorder->enter(step, Fields(values...));
    }
    ~RecordedSection()
    {
        if (recorder != nullptr)
            recorder->leave();
    }
    RecordedSection(const RecordedSection&) = delete;
    RecordedSection& operator=(const RecordedSection&) = delete;

private:
    Recorder* const recorder;
};

template <typename... Values>
void recordStep(Step step, const Values&... values)
{
    const RecordedSection section(step, values...);
}

/** What the call answers, a number, a truth or a std::string of bytes; `values` are what it asks. */
template <typename Call, typename... Values>
auto recorded(Step step, Call&& call, const Values&... values)
{
    auto own = call();
    auto* recorder = Recorder::active();
    if (recorder == nullptr)
        return own;
    Fields asked(values...);
    if constexpr (std::is_same_v<decltype(own), std::string>)
        return recorder->answer(step, asked, std::move(own));
    else
        return static_cast<decltype(own)>(recorder->answer(step, asked, static_cast<std::int64_t>(own)));
}

} // namespace Platform
