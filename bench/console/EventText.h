#pragma once

#include "bench/unit/Journal.h"

#include <span>

namespace Bench
{

/** What an event is to a person who looks for what has happened. */
enum class Weight {
    telling,
    gain,    ///< a gain of the DSP, one of many at each change of the volume
    echo,    ///< of what another stream says, or of what the bench itself has sent
    regular, ///< comes again and again by itself
    detail   ///< see isDetail
};
Weight weightOf(const Event& event);
/** Heartbeats and acknowledgements. */
bool comesByItself(const Event& event);

/** The stream of the lines that are said to the console of the panel. */
inline const std::string saidStream = "said";

/** What an event is about. */
struct Subject
{
    std::string name;
    std::vector<std::string> streams; ///< first words of theirs; what is in none of all is the last one's
};
std::span<const Subject> allSubjects();
const Subject& subjectOf(const Event& event);
/** Null when there is none of this name. */
const Subject* findSubject(const std::string& name);

/** Of what comes by itself, heartbeats and acknowledgements, one each with how many came between two other events. */
std::vector<Event> folded(const std::vector<Event>& events);

} // namespace Bench
