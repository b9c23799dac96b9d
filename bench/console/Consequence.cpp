#include "bench/console/Consequence.h"

#include "bench/console/EventText.h"
#include "ctl/Client.h"
#include "ctl/Columns.h"
#include "ctl/Fields.h"

#include <algorithm>
#include <ostream>
#include <sstream>

namespace Bench
{

namespace
{

constexpr std::chrono::milliseconds patience { 1000 };
/** What belongs together comes so soon after each other. */
constexpr std::chrono::milliseconds together { 200 };
constexpr std::size_t mostEvents = 1000;

/** What a person says to the network does not tell what came of it. */
bool counts(const Event& event)
{
    const auto weight = weightOf(event);
    return (weight == Weight::telling && event.stream != "mfd sent") || weight == Weight::gain;
}

/**
    What a person looks for comes first: the page that is there now, then the unit and the pages that have gone, what it
    sends, tells its programs, and sets in the DSP.
*/
int rankOf(const Event& event)
{
    const auto begins = [&](const char* part) { return event.stream.starts_with(part); };
    if (weightOf(event) == Weight::gain || (event.stream == "dsp" && event.text.starts_with("register")))
        return 4;
    if (begins("program ") || event.text == "confirmed" || event.text == "covered")
        return 3;
    return begins("frame ") ? 2 : begins("page ") && event.text == "shown" ? 0 : 1;
}

bool contains(const std::vector<ActiveFault>& faults, const ActiveFault& fault)
{
    return std::ranges::find(faults, fault.what, &ActiveFault::what) != faults.end();
}

/**
    Whether a fault of one list is none of the other. What is to go wrong so many times goes down by itself, and its words
    change; then the other has as many that the same line ends.
*/
bool isMissing(const ActiveFault& fault, const std::vector<ActiveFault>& of, const std::vector<ActiveFault>& in)
{
    const auto alike = [&](const auto& faults) { return std::ranges::count(faults, fault.cure, &ActiveFault::cure); };
    return !contains(in, fault) && alike(in) < alike(of);
}

std::string milliseconds(Clock::duration time)
{
    return std::to_string(std::chrono::duration_cast<std::chrono::milliseconds>(time).count());
}

} // namespace

Consequence::Consequence(Console& consoleToUse)
    : console(consoleToUse)
    , from(console.unit.journal.end())
    , before(activeFaults(console.unit))
{
}

void Consequence::tell()
{
    console.headline = from;
    if (tellFaults())
        return;
    if (const auto events = await(); !events.empty())
        return tell(events);
    auto why = whyNothing();
    bool changed = false;
    for (const auto& fault : activeFaults(console.unit))
    {
        why += "; " + fault.what;
        if (contains(before, fault))
            continue;
        tellArmed(fault);
        changed = true;
    }
    if (!changed)
        console.output << console.style.dim("  Nothing within a second: " + why) << "\n";
}

void Consequence::tellArmed(const ActiveFault& fault)
{
    console.output << "  " << console.style.warning(fault.what) << console.style.dim("  until " + fault.cure) << "\n";
}

bool Consequence::tellFaults()
{
    const auto now = activeFaults(console.unit);
    bool changed = false;
    for (const auto& fault : now)
        if (isMissing(fault, now, before))
        {
            tellArmed(fault);
            changed = true;
        }
    for (const auto& fault : before)
        if (isMissing(fault, before, now))
        {
            console.output << "  " << console.style.good("well again") << console.style.dim("  " + fault.what) << "\n";
            changed = true;
        }
    return changed;
}

std::vector<Event> Consequence::await() const
{
    const auto& journal = console.unit.journal;
    if (journal.waitFor(from, Clock::now() + patience, counts))
        journal.waitFor(journal.end(), Clock::now() + together, [](const Event&) { return false; });
    return journal.find(from, mostEvents, counts);
}

void Consequence::tell(const std::vector<Event>& events)
{
    constexpr int usualWidth = 100, reserved = 24, longest = 48;
    auto shown = events;
    std::ranges::stable_sort(shown, {}, rankOf);
    const auto width = (console.style.width > 0 ? console.style.width : usualWidth) - reserved;
    std::string text;
    std::size_t told = 0;
    for (; told < shown.size(); ++told)
    {
        const auto next =
            (told > 0 ? " · " : "") + Ctl::shortened(shown[told].stream + " " + shown[told].text, longest);
        if (told > 0 && Ctl::widthOf(text + next) > width)
            break;
        text += next;
    }
    if (told < shown.size())
        text += " · " + std::to_string(shown.size() - told) + " more";
    console.output << "  " << console.style.accent("→") << " " << text
                   << console.style.dim("  " + milliseconds(shown.front().at - from.at) + " ms") << "\n";
    if (const auto request = lastRequest(); request && request->status != "done")
        console.output << "    " << request->text << "\n";
}

std::string Consequence::whyNothing() const
{
    auto& unit = console.unit;
    if (!unit.engine().isRunning())
        return "the engine does not run";
    if (const auto request = lastRequest())
        return request->text;
    if (const auto complaint = lastComplaint(); !complaint.empty())
        return "the engine's log says: " + complaint;
    const auto mcu = unit.mcu->state();
    const auto isSent = [](const Event& event) { return event.stream.starts_with("sent "); };
    const auto sent = unit.journal.find(from, 1, isSent);
    if (mcu.silent)
        return "the microcontroller is silent";
    if (mcu.waiting > 0)
        return "the unit has not acknowledged " + std::to_string(mcu.waiting) + " frames yet";
    if (!sent.empty())
        return "the unit has taken " + sent.front().stream.substr(sent.front().stream.find(' ') + 1) +
               " and does nothing new";
    return "what it asks for is so already, or nobody listens";
}

/** A request for a page that the engine has taken up since then, and what became of it. */
std::optional<Consequence::Request> Consequence::lastRequest() const
{
    Ctl::Client client(console.unit.engine().busAddress());
    const auto answer = client.ask("Requests");
    if (answer.kind != Ctl::Answer::done || !answer.value.is_array() || answer.value.empty())
        return {};
    const Ctl::Fields request(answer.value.back());
    const auto age = request.number("askedForMs");
    if (!age || std::chrono::milliseconds(*age) > Clock::now() - from.at)
        return {};
    return Request { request["status"], "the request for " + request["page"] + " is " + request["status"] +
                                            (request.has("because") ? ": " + request["because"] : "") };
}

/** The engine's last warning or error since then; "" when there was none. */
std::string Consequence::lastComplaint() const
{
    std::string complaint;
    for (const auto& event : console.unit.journal.find(from, mostEvents, isIn("log")))
    {
        std::istringstream line(event.text);
        std::string date, time, level, who, where, text;
        line >> date >> time >> level >> who >> where >> std::ws;
        if (std::getline(line, text) && (level == "warning" || level == "error") && !comesByItself(event))
            complaint = text;
    }
    return complaint;
}

} // namespace Bench
