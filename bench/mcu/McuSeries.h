#pragma once

#include "bench/mcu/McuFrame.h"
#include "bench/unit/Device.h"

#include <array>

namespace Bench
{

/**
    Frames that come by themselves, turn after turn or at their time. The microcontroller takes one when it has nothing
    else to say, so that at most one of each kind waits for the link.

    Journal streams: the kind's own ("N sent, M skipped", when it ends), "n2k" (what became of a play).
*/
class McuSeries : public Device
{
public:
    using Milliseconds = std::chrono::milliseconds;

    explicit McuSeries(Journal& journalToUse)
        : journal(journalToUse)
    {
    }

    enum Kind : std::size_t { holding, flooding, floodingNetwork, kinds };

    /** The same frame once each interval for this long, at least once, then the last one. One before ends now. */
    void repeat(Kind kind, const char* stream, McuMessage frame, McuMessage last, Milliseconds interval,
                Milliseconds duration);
    /**
        Frames in turn, so many a second (1 to `mostPerSecond`), at least one. When another one's turn comes while one
        waits, that turn is skipped and counted. A flood before ends now.
    */
    void flood(Kind kind, const char* stream, std::vector<McuMessage> frames, int perSecond, Milliseconds duration);

    struct TimedFrame
    {
        Milliseconds due; ///< from the begin
        McuMessage frame;
    };
    /**
        In this order, none before it is due, and none is skipped. A play before ends now. `name` is for the journal:
        "played N messages of NAME".
    */
    void play(std::string name, std::vector<TimedFrame> frames);
    void stopPlaying();
    /** Ends all of them. */
    void clear();

    /** What the link, which is free, carries next. What is played must go out whole, so it goes before the floods. */
    std::optional<McuMessage> next();
    std::optional<Clock::time_point> due() const override;
    /** The same for what is played, which counts while the link is free. */
    std::optional<Clock::time_point> playDue() const;

    static constexpr int mostPerSecond = 1000;

private:
    struct Series
    {
        const char* stream;
        std::vector<McuMessage> frames;
        std::optional<McuMessage> last; ///< at its end
        std::int64_t allTurns;
        Clock::duration interval;
        Clock::time_point begin, end;
        std::int64_t turns = 0; ///< that have come
        std::int64_t sent = 0;
        bool waits = false;
        /** Empty while nothing but the link is to come. */
        std::optional<Clock::time_point> due() const;
    };
    struct Playing
    {
        std::string name;
        std::vector<TimedFrame> frames;
        Clock::time_point begin;
        std::size_t sent = 0;
    };

    Journal& journal;
    std::array<std::optional<Series>, kinds> series;
    std::optional<Playing> playing;
    std::deque<McuMessage> lastOnes; ///< of series that have ended

    void begin(Kind kind, Series with);
    void end(std::optional<Series>& each);
    void doDue() override;
};

} // namespace Bench
