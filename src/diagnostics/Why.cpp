#include "diagnostics/Why.h"

#include "EngineApi/DeviceStatus.h"
#include "EngineApi/Pages.h"
#include "EngineApi/Programs.h"
#include "EngineApi/Provided.h"
#include "EngineApi/Remote.h"
#include "EngineApi/SystemState.h"
#include "EngineLayer/keys/KeyManager.h"
#include "EngineLayer/system/SystemStateManager.h"
#include "Extend/ExeMonitor.h"
#include "Extend/ViewManager.h"
#include "diagnostics/Sentences.h"
#include "diagnostics/Text.h"
#include "dsp/AudioServices.h"
#include "dsp/DSPSettingHelperImpl.h"
#include "kernel/SystemEngine.h"
#include "platform/channel/Ipc.h"
#include "platform/config/Configuration.h"
#include "platform/record/Observer.h"

namespace Diagnostics
{

using namespace EngineApi;
using EngineLayer::RequestRecord;
using EngineLayer::Verdict;
using Extend::ExeMonitor;
using Extend::ViewManager;
using Requests = std::vector<RequestRecord>;

namespace
{

Requests lastRequests()
{
    return EngineLayer::SystemStateManager::getInstance()->getRequests();
}

/** A group that has been busy with one message, or has left one waiting, for so long is stuck. */
constexpr std::chrono::milliseconds longestHandler { 1500 };

/** Which group is stuck, as a sentence. */
std::optional<std::string> stuckGroup()
{
    for (const auto& group : Kernel::SystemEngine::getInstance()->getGroupStatus())
        if (group.isStuck(longestHandler))
            return text(group.name + " " + group.describe()) + " (for " +
                   durationText(msSince(group.receiver != Kernel::noComponent ? group.since : group.queuedSince)) +
                   ", messages that wait: " + std::to_string(group.queued) + ").";
    return {};
}

/** "" while the unit serves its pages. */
std::string stateSentence()
{
    switch (getSystemState())
    {
    case kBooting:
        return "The unit is starting: the microcontroller has not yet said which source to begin with.";
    case kAntitheft:
    case kLocked:
        return "The unit is locked: only mbAntitheft may run.";
    case kPowerOff:
        return "The unit is switching off.";
    case kISRMode:
        return "The unit is in kISRMode: audio and video are off until it is left.";
    case kDummyPowerOff:
        return "The unit is in kDummyPowerOff: it looks off, and comes back with its power key.";
    default:
        return {};
    }
}

ExeMonitor::Status lifeOf(int appType)
{
    const auto all = ExeMonitor::getInstance()->getStatus();
    const auto found = all.find(appType);
    return found == all.end() ? ExeMonitor::Status() : found->second;
}

/** What keeps the program from doing anything; "" for nothing. */
std::string programSentence(int appType)
{
    const std::string name = Pubhead::appTypeName(appType);
    const auto life = lifeOf(appType);
    switch (life.state)
    {
    case kStarting:
        return name + " was started " + durationText(msSince(life.since)) + " ago and is not ready yet.";
    case kClosing:
        return name + " was told to end " + durationText(msSince(life.since)) + " ago, and still runs.";
    case kDisconnect:
        if (life.problem.isNotEmpty())
            return name + " does not run (" + text(life.problem) + ").";
        if (life.starts == 0)
            return name + " does not run: nothing has started it.";
        return name + " does not run: " +
               (life.wasClosed ? "it was closed, as nobody needed it, " : "its process ended without being told to, ") +
               durationText(msSince(life.since)) + " ago.";
    default:
        break;
    }
    const auto process = " (process " + std::to_string(life.process) + ")";
    if (!Platform::IPCMsg::MessageHelper::isPresent(appType))
        return name + process + " is not on the message bus.";
    if (life.isSilent)
        return name + process + " does not answer the heartbeat.";
    return {};
}

const RequestRecord* newestOf(const Requests& requests, int page)
{
    for (auto each = requests.rbegin(); each != requests.rend(); ++each)
        if (each->request.page == page)
            return &*each;
    return nullptr;
}

struct Decision
{
    const RequestRecord* request = nullptr;
    const Verdict* verdict = nullptr;
};

/** The last rule that decided about the page, of the screen or of the sound. */
Decision lastDecision(const Requests& requests, int page, bool ofScreen)
{
    for (auto each = requests.rbegin(); each != requests.rend(); ++each)
        for (auto verdict = each->verdicts.rbegin(); verdict != each->verdicts.rend(); ++verdict)
            if (verdict->page == page &&
                (isOfScreen(verdict->rule) == ofScreen || verdict->rule == Verdict::Rule::displaced))
                return { &*each, &*verdict };
    return {};
}

/** Nothing is told twice. */
void add(Explanation& answer, const std::string& fact)
{
    if (fact != answer.sentence && std::ranges::find(answer.facts, fact) == answer.facts.end())
        answer.facts.push_back(fact);
}

void addRequest(Explanation& answer, const RequestRecord* request)
{
    if (request == nullptr)
        return;
    const auto because = becauseOf(*request);
    const bool isTold = answer.sentence.find(because) != std::string::npos;
    add(answer, "Last asked for: " + nameOf(*request) + (isTold ? "." : ". " + because));
}

void addDecision(Explanation& answer, const Decision& decision)
{
    if (decision.verdict == nullptr)
        return;
    const auto sentence = sentenceOf(*decision.verdict);
    add(answer, (sentence == answer.sentence ? "" : sentence + " ") + "Decided for " + nameOf(*decision.request) + ".");
}

/** Of the device that the page plays from, and that is not there; "" for none. */
std::string missingDevice(int page)
{
    struct Row
    {
        int source, device;
        const char* sentence;
    };
    constexpr Row rows[] { { SRC_USB, usbStorage, "no USB storage is plugged in." },
                           { SRC_IPOD, iPodConnected, "no iPod is connected." },
                           { SRC_BT_AUDIO, bluetoothConnected, "no phone is connected." } };
    for (const auto& row : rows)
        if (row.source == getSource(page) && !getDeviceState(row.device))
            return row.sentence;
    return {};
}

std::string frontText(int page)
{
    return page == Pubhead::NUM_OF_PAGES ? "no page" : pageText(page);
}

/** " runs, place 2 on the screen (1 is on top), not playing." */
std::string placeText(const PageRunState& run)
{
    if (run.reportedStep == PageRunState::stopped)
        return " does not run.";
    const auto& states = run.states;
    return " runs, " +
           (states.showState == PageStates::notShown
                ? std::string("not on the screen")
                : "place " + std::to_string(states.showState) + " on the screen (1 is on top)") +
           (states.playState == PageStates::playing ? ", playing."
            : states.playState == PageStates::mixed ? ", playing with another."
                                                    : ", not playing.");
}

void addFacts(Explanation& answer, int page, const Requests& requests)
{
    addRequest(answer, newestOf(requests, page));
    const auto handler = getHandler(page);
    const auto run = handler->getRunState();
    add(answer, std::string("Its program ") + Pubhead::appTypeName(handler->getAppType()) + ": " +
                    programStateName(lifeOf(handler->getAppType()).state) + ".");
    add(answer, pageText(page) + placeText(run));
    add(answer, "The engine has " + frontText(getFrontShow()) + " in front and " + frontText(getNormalSource()) +
                    " as source.");
    if (const auto state = stateSentence(); !state.empty())
        add(answer, state);
}

/** The page is to be in front, and is not on the screen. */
std::string notShownSentence(int page)
{
    const int appType = appTypeOfPage(page);
    if (const auto program = programSentence(appType); !program.empty())
        return pageText(page) + " is to be in front, but " + program;
    const auto view = ViewManager::getInstance()->getView();
    if (view.showState == ViewManager::kHiding)
        return pageText(page) + " is on its way: " + Pubhead::appTypeName(appTypeOfPage(view.current)) +
               " has been told to hide " + pageText(view.current) + " first, and has not answered yet.";
    if (view.showState == ViewManager::kShowing && view.next == page)
        return pageText(page) + " is on its way: " + Pubhead::appTypeName(appType) +
               " has been told to show it, and has not answered yet.";
    if (view.next == page)
        return pageText(page) + " is on its way: " + Pubhead::appTypeName(appType) +
               " has its command line, and has not asked to be shown yet.";
    return pageText(page) + " is to be in front, but " + Pubhead::appTypeName(appType) +
           " has not shown it; it is told again when it asks.";
}

/** What of the last request for the page says why it is not where it was asked to be; "" for nothing. */
std::string requestSentence(const RequestRecord* request)
{
    using Status = RequestRecord::Status;
    if (request == nullptr || request->request.action == AppAction::ToStop ||
        request->request.action == AppAction::ToHide)
        return {};
    if (!request->isOver())
        return pageText(request->request.page) + " was asked for " + durationText(msSince(request->asked)) + " ago. " +
               becauseOf(*request);
    if (request->status == Status::refused || request->status == Status::failed)
        return "The last request for " + pageText(request->request.page) +
               (request->status == Status::refused ? " was refused. " : " has failed. ") + becauseOf(*request);
    return {};
}

void knowPage(int page, const std::string& name)
{
    if (getHandler(page) == nullptr)
        throw Unknown("There is no page \"" + name + "\".");
}

} // namespace

Explanation whyPage(int page)
{
    knowPage(page, pageText(page));
    const auto requests = lastRequests();
    Explanation answer;
    const auto view = ViewManager::getInstance()->getView();
    const int front = getFrontShow();
    const auto decision = lastDecision(requests, page, true);
    const auto* asked = newestOf(requests, page);
    const auto request = requestSentence(asked);
    const auto stuck = stuckGroup();
    if (view.isShown && view.current == page && front == page && programSentence(appTypeOfPage(page)).empty())
        answer.sentence =
            pageText(page) + " is in front, and " + Pubhead::appTypeName(appTypeOfPage(page)) + " has shown it.";
    else if (stuck)
        answer.sentence = pageText(page) + " cannot come to the front now: " + *stuck;
    else if (const auto state = stateSentence(); !state.empty() && front != page)
        answer.sentence = state;
    else if (front == page && (asked == nullptr || !asked->isOver() || request.empty()))
        answer.sentence = notShownSentence(page);
    else if (!request.empty())
        answer.sentence = request;
    else if (decision.verdict != nullptr && decision.verdict->rule != Verdict::Rule::onTop &&
             decision.verdict->rule != Verdict::Rule::uncovered)
        answer.sentence = sentenceOf(*decision.verdict);
    else if (decision.verdict != nullptr || asked != nullptr)
        answer.sentence = pageText(page) + " was in front before: " + frontText(front) + " is there now.";
    else
        answer.sentence = "Nobody has asked for " + pageText(page) + " lately: " + frontText(front) + " is in front.";
    if (decision.request != asked) // which tells it itself
        addDecision(answer, decision);
    if (front != page)
        addDecision(answer, lastDecision(requests, front, true));
    addFacts(answer, page, requests);
    return answer;
}

Explanation whySource(int page)
{
    knowPage(page, pageText(page));
    const auto handler = getHandler(page);
    const auto requests = lastRequests();
    const auto run = handler->getRunState();
    const bool plays = run.reportedStep != PageRunState::stopped && run.states.playState != PageStates::stopped;
    const auto decision = lastDecision(requests, page, false);
    const auto* asked = newestOf(requests, page);
    const auto stuck = stuckGroup();
    Explanation answer;
    const auto program = programSentence(handler->getAppType()), device = missingDevice(page);
    if (!handler->getConfig().isSourcePage)
        answer.sentence = pageText(page) + " is no source.";
    else if (plays)
        answer.sentence = pageText(page) + (!program.empty()  ? " is to play, but " + program
                                            : !device.empty() ? " is the source, but " + device
                                                              : " plays.");
    else if (stuck)
        answer.sentence = pageText(page) + " cannot play now: " + *stuck;
    else if (const auto state = stateSentence(); !state.empty())
        answer.sentence = state;
    else if (!device.empty())
        answer.sentence = pageText(page) + " does not play: " + device;
    else if (const auto request = requestSentence(asked); !request.empty())
        answer.sentence = request;
    else if (decision.verdict != nullptr)
        answer.sentence = sentenceOf(*decision.verdict);
    else
        answer.sentence =
            "Nobody has asked for " + pageText(page) + " lately: " + frontText(getNormalSource()) + " is the source.";
    if (decision.request != asked)
        addDecision(answer, decision);
    addFacts(answer, page, requests);
    return answer;
}

namespace
{

/** Of what a person has done: "with a key (KeyManager)". */
std::string wayOf(const Kernel::Actor& actor)
{
    const auto name = text(actor.name());
    switch (actor.component)
    {
    case Kernel::keyManagerId:
        return "with a key (" + name + ")";
    case Kernel::navicoManagerId:
        return "from the boat's network (" + name + ")";
    case Kernel::mainMenuApplicationId:
        return "in the main menu (" + name + ")";
    default:
        return "by " + name;
    }
}

} // namespace

Explanation whySilent()
{
    std::vector<std::string> reasons;
    const auto because = [&](const std::string& reason)
    {
        if (!reason.empty())
            reasons.push_back(reason);
    };
    const auto* chips = Provided<Dsp::ChipManager>::get();
    const auto dsp = chips == nullptr ? Dsp::DspStatus() : chips->getStatus();
    auto& volumes = *Dsp::DSPSettingHelperImpl::getInstance();
    const int source = getNormalSource();
    because(stateSentence());
    if (!EngineLayer::KeyManager::getInstance()->isPoweredOn())
        because("The unit was switched off with its power key.");
    if (!dsp.leftAlone.empty())
        because("The DSP is left alone: " + dsp.leftAlone + ".");
    else if (!dsp.isBooted)
        because("The DSP was not started yet.");
    if (dsp.isMuted)
        because("The sound was muted " + wayOf(dsp.muter) + ".");
    if (source == Pubhead::NUM_OF_PAGES)
        because("There is no source yet.");
    else if (source == Pubhead::mbAVOff)
        because("The source is mbAVOff, which plays nothing.");
    else if (const auto device = missingDevice(source); !device.empty())
        because(pageText(source) + " is the source, but " + device);
    if (const auto program = programSentence(appTypeOfPage(source));
        source != Pubhead::NUM_OF_PAGES && !program.empty())
        because(pageText(source) + " is the source, but " + program);
    if (volumes.getVolume(false) == 0)
        because("The volume of zone 1 is 0.");
    if (dsp.changesSource)
        because("A source is being changed: the sound comes back within a second.");
    if (dsp.isAlerting)
        because("The alert sounds in place of the source.");
    if (!dsp.lastFailure.empty())
        because("The DSP has missed " + std::to_string(dsp.failures) + " writes, the last " +
                durationText(msSince(dsp.lastFailureAt)) + " ago: " + dsp.lastFailure + ".");
    if (const auto stuck = stuckGroup())
        because(*stuck);
    Explanation answer;
    answer.sentence = reasons.empty() ? "Nothing in the engine keeps the unit silent: " + pageText(source) +
                                            " plays at volume " + std::to_string(volumes.getVolume(false)) + "."
                                      : reasons.front();
    for (std::size_t i = 1; i < reasons.size(); ++i)
        answer.facts.push_back("Also: " + reasons[i]);
    answer.facts.push_back("Source " + pageText(source) + ", volumes " + std::to_string(volumes.getVolume(false)) +
                           " and " + std::to_string(volumes.getVolume(true)) + ", " + std::to_string(dsp.blocks) +
                           " blocks written to the DSP.");
    return answer;
}

Explanation whyRequest(std::uint32_t number)
{
    const auto requests = lastRequests();
    for (const auto& each : requests)
    {
        if (each.number != number)
            continue;
        Explanation answer;
        answer.sentence = becauseOf(each);
        add(answer, "It is " + nameOf(each) + ".");
        for (const auto& verdict : each.verdicts)
            add(answer, sentenceOf(verdict));
        for (const auto& order : each.orders)
            answer.facts.push_back("Order " + std::string(switchTypeName(static_cast<int>(order.type))) + " to " +
                                   pageText(order.page) +
                                   (!order.finished    ? ": not reported."
                                    : !order.succeeded ? ": failed."
                                                       : ": carried out."));
        return answer;
    }
    throw Unknown("Request " + std::to_string(number) + " is not among the last 64.");
}

Explanation whyProgram(int appType)
{
    const int page = getPageOfAppType(appType);
    if (page == Pubhead::NUM_OF_PAGES)
        throw Unknown(std::string("There is no program \"") + Pubhead::appTypeName(appType) + "\".");
    const auto life = lifeOf(appType);
    const std::string name = Pubhead::appTypeName(appType);
    Explanation answer;
    answer.sentence = programSentence(appType);
    if (answer.sentence.empty())
        answer.sentence = name + " runs (process " + std::to_string(life.process) + ") and answers.";
    const auto path = text(Platform::AppConfig::getAppPath(page));
    answer.facts.push_back(path.empty() ? "No program is configured for " + pageText(page) + "."
                                        : "It is " + path + ".");
    answer.facts.push_back("It was started " + std::to_string(life.starts) + " times and has ended " +
                           std::to_string(life.ends) + " times.");
    if (life.lastHeartbeat)
        answer.facts.push_back("Its last heartbeat came " + durationText(msSince(*life.lastHeartbeat)) + " ago.");
    const auto requests = lastRequests();
    for (int each = 0; each < Pubhead::NUM_OF_PAGES; ++each)
        if (appTypeOfPage(each) == appType)
            addRequest(answer, newestOf(requests, each));
    return answer;
}

namespace
{

template <typename Name>
int find(const std::string& wanted, int count, Name&& name, const char* kind)
{
    for (int i = 0; i < count; ++i)
        if (juce::String(name(i)).equalsIgnoreCase(juce::String(wanted)))
            return i;
    throw Unknown(std::string("There is no ") + kind + " \"" + wanted + "\".");
}

int findPage(const std::string& name)
{
    return find(
        name, Pubhead::NUM_OF_PAGES, [](int page) { return Pubhead::pageName(page); }, "page");
}

Explanation explain(const std::string& subject, const std::string& name)
{
    if (subject == "page")
        return whyPage(findPage(name));
    if (subject == "source")
        return whySource(findPage(name));
    if (subject == "silent")
        return whySilent();
    if (subject == "request")
        return whyRequest(static_cast<std::uint32_t>(juce::String(name).getLargeIntValue()));
    if (subject == "program")
        return whyProgram(find(
            name, Pubhead::AppUnknown, [](int type) { return Pubhead::appTypeName(type); }, "program"));
    throw Unknown("Nobody can say why about \"" + subject + "\": page, source, silent, request or program.");
}

} // namespace

Explanation why(const std::string& subject, const std::string& name)
{
    try
    {
        return explain(subject, name);
    }
    catch (const Platform::Observer::Busy&)
    {
        if (const auto stuck = stuckGroup())
            return { "A thread that does not get on keeps what the answer needs: " + *stuck, {} };
        throw;
    }
}

} // namespace Diagnostics
