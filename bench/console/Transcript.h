#pragma once

#include "bench/unit/Journal.h"

#include <set>

namespace Bench
{

/** The sections that a transcript is to have. */
struct TranscriptSections
{
    bool mcu = false;
    bool devices = false;   ///< the device status among them, which tells less when things come and go fast
    std::set<int> programs; ///< application types
    static TranscriptSections all();
};

/**
    What the unit sent during a run, one line for each message: to the microcontroller, then to each program that
    received anything. Each kind of frame, each program and its pages have an order of their own, as their senders do
    not wait for each other; so the same run gives the same text. What a clock sends and what a program says of itself
    is left out.
*/
std::string composeTranscript(const std::vector<Event>& events, const TranscriptSections& sections);

/** Empty when they are the same, else the first line that differs with a few around it. */
std::string transcriptDifference(const std::string& kept, const std::string& seen);

} // namespace Bench
