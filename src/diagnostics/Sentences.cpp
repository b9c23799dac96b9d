#include "diagnostics/Sentences.h"

#include "EngineApi/Pages.h"
#include "EngineApi/SystemState.h"
#include "diagnostics/Text.h"

namespace Diagnostics
{

using EngineLayer::RequestReason;
using EngineLayer::RequestRecord;
using EngineLayer::Verdict;

std::string durationText(std::int64_t milliseconds)
{
    constexpr std::int64_t second = 1000, minute = 60 * second, hour = 60 * minute;
    if (milliseconds < second)
        return std::to_string(milliseconds) + " ms";
    if (milliseconds < 10 * second)
        return std::to_string(milliseconds / second) + "." + std::to_string(milliseconds % second / 100) + " s";
    if (milliseconds < 2 * minute)
        return std::to_string(milliseconds / second) + " s";
    if (milliseconds < 2 * hour)
        return std::to_string(milliseconds / minute) + " min";
    return std::to_string(milliseconds / hour) + " h";
}

bool isOfScreen(Verdict::Rule rule)
{
    using Rule = Verdict::Rule;
    return rule == Rule::onTop || rule == Rule::behind || rule == Rule::notRaised || rule == Rule::neverShown ||
           rule == Rule::uncovered;
}

std::string sentenceOf(const Verdict& verdict)
{
    using Rule = Verdict::Rule;
    const std::string page = pageText(verdict.page), other = pageText(verdict.other);
    const auto levels = [&](const char* kind, const char* between)
    {
        return std::string(kind) + " level " + std::to_string(verdict.level) + between +
               std::to_string(verdict.otherLevel);
    };
    switch (verdict.rule)
    {
    case Rule::onTop:
        return verdict.page == verdict.other || verdict.other == Pubhead::NUM_OF_PAGES
                   ? page + " is on top: nothing else competes for the screen."
                   : page + " is on top of " + other + " (" + levels("show", " over ") + ").";
    case Rule::behind:
        return page + " stays behind " + other + " (" + levels("show", " under ") + ").";
    case Rule::notRaised:
        return page +
               " was not brought to the front: nobody chose it, and what the unit asks for by itself does not push " +
               other + " away.";
    case Rule::neverShown:
        return page + " takes no part in the screen.";
    case Rule::uncovered:
        return page + " is on top, as " + other + " has left the screen.";
    case Rule::plays:
        return page + " plays: nothing else did.";
    case Rule::silences:
        return page + " plays in place of " + other + " (" + levels("play", " over ") + ").";
    case Rule::silencedBy:
        return page + " was silenced by " + other + " (" + levels("play", " under ") + ").";
    case Rule::outplayed:
        return page + " stays silent: " + other + " plays, and " + page + " does not outrank it (" +
               levels("play", " against ") + ").";
    case Rule::mixes:
        return page + " and " + other + " play together.";
    case Rule::neverPlays:
        return page + " has no sound.";
    case Rule::heir:
        return page + " plays, as " + other + " has stopped.";
    case Rule::displaced:
        return page + " had to stop: a zone has one source at a time, and " + other + " took its place.";
    case Rule::startedInstead:
        return page + " was started, as nothing else would play when " + other + " stops.";
    }
    return {};
}

std::string becauseOf(const RequestRecord& request)
{
    const std::string page = pageText(request.request.page);
    switch (request.reason)
    {
    case RequestReason::stateRefuses:
        return std::string("The unit is in ") + EngineApi::systemStateName(request.state) +
               ", which serves no such request.";
    case RequestReason::waitsForSwitch:
        return "Another request is carried out first.";
    case RequestReason::queueFull:
        return "Too many requests were waiting already.";
    case RequestReason::noHandler:
        return "Nothing in the engine serves " + page + ".";
    case RequestReason::notRunning:
        return page + " did not run, so there was nothing to stop.";
    case RequestReason::cutShort:
        return "The unit is switching off.";
    case RequestReason::timeOut:
    {
        const int missing = request.missingPage();
        return pageText(missing) + " (" + Pubhead::appTypeName(EngineApi::appTypeOfPage(missing)) +
               ") did not report its order within 3 s.";
    }
    case RequestReason::ordersRefused:
        for (const auto& order : request.orders)
            if (!order.succeeded)
                return pageText(order.page) + " could not carry out its order.";
        return "An order could not be carried out.";
    case RequestReason::none:
    case RequestReason::nothingToDo:
        break;
    }
    std::string text;
    for (const auto& verdict : request.verdicts)
        if (verdict.page == request.request.page)
            text += (text.empty() ? "" : " ") + sentenceOf(verdict);
    if (request.reason == RequestReason::nothingToDo)
        return text.empty() ? "All was as it was asked for already." : text + " So there was nothing to change.";
    if (!text.empty())
        return text;
    return request.isOver() ? page + " was stopped." : "It is being carried out.";
}

std::string nameOf(const RequestRecord& request)
{
    return "request " + std::to_string(request.number) + " (" + pageText(request.request.page) + " " +
           EngineApi::actionName(static_cast<int>(request.request.action)) + ", by " + text(request.asker.name()) +
           ", " + durationText(msSince(request.asked)) + " ago)";
}

} // namespace Diagnostics
