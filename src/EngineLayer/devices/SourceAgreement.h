#pragma once

#include <optional>

namespace EngineLayer
{

/** A source as the microcontroller names it. */
struct McuSource
{
    int type = -1;
    int number = -1;

    bool isComplete() const { return type >= 0 && number >= 0; }
    bool operator==(const McuSource&) const = default;
};

/** Makes the unit and its microcontroller agree on the source that plays; either side may change it. */
class SourceAgreement
{
public:
    enum class Request {
        repeated, ///< the pair is known; it only confirms
        first,    ///< the first one since the last-memory answer: the unit starts with it
        schedule  ///< switch to it now
    };
    enum class Report {
        nothing, ///< the unit is on the way to what the microcontroller asked for
        ask,     ///< ask the microcontroller to follow
        confirm  ///< the unit has reached what the microcontroller asked for
    };

    /** The microcontroller has answered the last-memory request: its next request is the first. */
    void restart() { firstRequestSeen = false; }
    Request mcuRequests(McuSource source);
    void mcuConfirms(McuSource source);
    Report unitSwitchedTo(McuSource source);

    bool isAgreed() const { return agreed; }

    /**
        The unit's source, to be asked for once more, when the microcontroller has confirmed another one or none by now
        and by the call before: a frame was lost, or the unit changed again before the answer came. Every heartbeat.
    */
    std::optional<McuSource> takeLost();

private:
    McuSource pending;
    bool isPendingOfMcu = false; ///< its wish, not the unit's
    McuSource current;           ///< the unit's
    McuSource confirmed;         ///< the last one that both had
    bool wasLost = false;
    bool agreed = true;
    bool firstRequestSeen = false;
};

} // namespace EngineLayer
