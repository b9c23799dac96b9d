#pragma once

#include "platform/base/Pubhead.h"

namespace EngineLayer
{

/** A rule of the scheduler that has decided about a page, most of them against another one. */
struct Verdict
{
    enum class Rule {
        onTop,         ///< above all others at its show level; the other was on top
        behind,        ///< stays behind the other, whose show level is higher
        notRaised,     ///< the system asks, and does not push the other away from the front
        neverShown,    ///< takes no part in the screen
        uncovered,     ///< on top, as the other has left the screen
        plays,         ///< nobody else plays
        silences,      ///< plays in place of the other, at its play level
        silencedBy,    ///< the other plays in its place
        outplayed,     ///< stays silent beside the other, whose play level is not lower
        mixes,         ///< both play
        neverPlays,    ///< takes no part in the sound
        heir,          ///< plays, as the other has stopped
        displaced,     ///< the one source or the one rear page: the other takes its place
        startedInstead ///< the default source, as nothing else would be left behind the menu
    };

    Rule rule;
    int page;
    int other = Pubhead::NUM_OF_PAGES;
    int level = 0,
        otherLevel = 0; ///< show levels for the screen, play levels for the sound; the asking page has one more
};

} // namespace EngineLayer
