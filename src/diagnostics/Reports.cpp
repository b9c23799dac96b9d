#include "diagnostics/Reports.h"

#include "EngineApi/Pages.h"
#include "EngineApi/Programs.h"
#include "EngineApi/Provided.h"
#include "EngineApi/Remote.h"
#include "EngineApi/SystemState.h"
#include "EngineLayer/channel/RemoteSessionManager.h"
#include "EngineLayer/hostlink/HostSessionManager.h"
#include "EngineLayer/keys/KeyManager.h"
#include "EngineLayer/system/SystemStateManager.h"
#include "EngineLayer/wiredremote/TLX70Dev.h"
#include "Extend/ExeMonitor.h"
#include "Extend/ViewManager.h"
#include "diagnostics/Sentences.h"
#include "diagnostics/Text.h"
#include "dsp/AudioChannel.h"
#include "dsp/AudioServices.h"
#include "dsp/DSPSettingHelperImpl.h"
#include "kernel/DeviceWorker.h"
#include "kernel/Names.h"
#include "kernel/SystemEngine.h"
#include "platform/base/Counter.h"
#include "platform/base/ProcessUsage.h"
#include "platform/channel/Ipc.h"
#include "platform/config/Configuration.h"
#include "platform/record/Observer.h"
#include "platform/settings/SettingTable.h"
#include "platform/settings/SetupStore.h"

#include <algorithm>

namespace Diagnostics::Reports
{

using namespace EngineApi;
using EngineLayer::HostSessionManager;
using EngineLayer::SystemStateManager;
using EngineLayer::TLX70Dev;
using Extend::ExeMonitor;
using Extend::ViewManager;

namespace
{

const auto begin = Platform::Clock::now();

/** Adds what `part` adds, unless somebody keeps its lock: then that is what is added. */
template <typename Part>
void add(Json& record, const char* what, Part&& part)
{
    try
    {
        part();
    }
    catch (const Platform::Observer::Busy&)
    {
        record["busy"].push_back(what);
    }
}

Dsp::DspStatus dspStatus()
{
    const auto* chips = Provided<Dsp::ChipManager>::get();
    return chips == nullptr ? Dsp::DspStatus() : chips->getStatus();
}

const char* playText(int state)
{
    return state == PageStates::playing ? "playing" : state == PageStates::mixed ? "mixed" : "stopped";
}

std::size_t waitingJobs(const juce::String& worker)
{
    for (const auto& each : Kernel::DeviceWorker::getStatus())
        if (each.name == worker)
            return each.waiting;
    return 0;
}

} // namespace

std::vector<std::string> muteReasons()
{
    std::vector<std::string> reasons;
    const auto status = dspStatus();
    if (status.isMuted)
        reasons.push_back("muted by " + text(status.muter.name()));
    if (status.changesSource)
        reasons.push_back("a source is being changed");
    if (status.isAlerting)
        reasons.push_back("the alert sounds instead");
    return reasons;
}

Json state()
{
    Json answer { { "version", HEADUNIT_VERSION },
                  { "state", systemStateName(getSystemState()) },
                  { "subState", systemSubStateName(getSystemSubState()) },
                  { "previousState", systemStateName(getPreviousSystemState()) } };
    add(answer, "the scheduler's tables",
        [&]
        {
            answer["front"] = pageText(getFrontShow());
            answer["normalSource"] = pageText(getNormalSource());
            answer["lastSource"] = pageText(getLastSourcePage());
            answer["rear"] = pageText(getRearPage());
        });
    const auto view = ViewManager::getInstance()->getView();
    answer["shown"] = view.isShown ? pageText(view.current) : "none";
    answer["changing"] = view.showState != ViewManager::kNormal;
    answer["poweredOn"] = EngineLayer::KeyManager::getInstance()->isPoweredOn();
    add(answer, "the audio control",
        [&]
        {
            answer["muted"] = dspStatus().isMuted;
            answer["muteReasons"] = muteReasons();
        });
    add(answer, "the volumes",
        [&]
        {
            auto& volumes = *Dsp::DSPSettingHelperImpl::getInstance();
            answer["volume1"] = volumes.getVolume(false);
            answer["volume2"] = volumes.getVolume(true);
        });
    answer["runningForMs"] = msSince(begin);
    const auto requests = SystemStateManager::getInstance()->getRequests();
    answer["waitingRequests"] = std::ranges::count_if(requests, [](const auto& each) { return !each.isOver(); });
    return answer;
}

Json pages()
{
    struct Row
    {
        int show;
        Json json;
    };
    std::vector<Row> rows;
    for (int page = 0; page < Pubhead::NUM_OF_PAGES; ++page)
    {
        const auto handler = getHandler(page);
        if (handler == nullptr)
            continue;
        const auto& config = handler->getConfig();
        const auto run = handler->getRunState();
        const bool running = run.reportedStep != PageRunState::stopped;
        const int show = running ? run.states.showState : int { PageStates::notShown };
        rows.push_back({ show,
                         { { "page", pageText(page) },
                           { "program", Pubhead::appTypeName(config.appType) },
                           { "running", running },
                           { "show", show },
                           { "play", playText(running ? run.states.playState : int { PageStates::stopped }) },
                           { "audio", running && run.states.audioState == PageStates::held },
                           { "video", running && run.states.videoState == PageStates::held },
                           { "zone", config.isRear ? "rear" : "front" },
                           { "showLevel", config.showLevel },
                           { "playLevel", config.playLevel },
                           { "audioChannel", Dsp::audioChannelName(handler->getAudioChannel()) },
                           { "source", config.isSourcePage } } });
        if (run.since != Platform::Clock::time_point())
            rows.back().json["changedForMs"] = msSince(run.since);
    }
    std::ranges::stable_sort(rows, {}, &Row::show);
    Json answer = Json::array();
    for (auto& row : rows)
        answer.push_back(std::move(row.json));
    return answer;
}

Json programs()
{
    const auto lives = ExeMonitor::getInstance()->getStatus();
    Json answer = Json::array();
    for (int appType = 0; appType < Pubhead::AppUnknown; ++appType)
    {
        const int page = getPageOfAppType(appType);
        const auto life = lives.find(appType);
        if (page == Pubhead::NUM_OF_PAGES && life == lives.end())
            continue;
        const auto status = life == lives.end() ? ExeMonitor::Status() : life->second;
        Json record { { "program", Pubhead::appTypeName(appType) },
                      { "state", programStateName(status.state) },
                      { "process", status.process },
                      { "path", text(Platform::AppConfig::getAppPath(page)) },
                      { "onBus", Platform::IPCMsg::MessageHelper::isPresent(appType) } };
        if (life != lives.end())
            record["stateForMs"] = msSince(status.since);
        if (status.lastHeartbeat)
            record["heartbeatForMs"] = msSince(*status.lastHeartbeat);
        if (const auto usage = Platform::ProcessUsage::of(status.process))
        {
            record["memoryBytes"] = usage->memoryBytes;
            if (usage->memoryLimitBytes)
                record["memoryLimitBytes"] = *usage->memoryLimitBytes;
            record["cpuMs"] = usage->cpuMs;
        }
        record["starts"] = status.starts;
        record["ends"] = status.ends;
        record["waitingMessages"] = EngineLayer::RemoteSessionManager::getInstance()->countWaiting(appType);
        answer.push_back(record);
    }
    return answer;
}

Json requests()
{
    using Status = EngineLayer::RequestRecord::Status;
    static constexpr std::array names { "waiting", "scheduling", "switching", "done", "refused", "failed" };
    static_assert(names.size() == static_cast<std::size_t>(Status::failed) + 1);
    Json answer = Json::array();
    for (const auto& each : SystemStateManager::getInstance()->getRequests())
    {
        Json record { { "number", each.number },
                      { "page", pageText(each.request.page) },
                      { "action", actionName(static_cast<int>(each.request.action)) },
                      { "automatic", each.request.autoSwitch },
                      { "asker", text(each.asker.name()) },
                      { "status", names[static_cast<std::size_t>(each.status)] },
                      { "because", becauseOf(each) },
                      { "askedForMs", msSince(each.asked) } };
        const auto stage = [&](const char* key, const auto& time)
        {
            if (time)
                record[key] = usBetween(each.asked, *time);
        };
        stage("scheduledUs", each.scheduled);
        stage("orderedUs", each.ordered);
        stage("finishedUs", each.finished);
        Json orders = Json::array();
        for (const auto& order : each.orders)
            orders.push_back(pageText(order.page) + " " + switchTypeName(static_cast<int>(order.type)) +
                             (!order.finished    ? ", not reported"
                              : !order.succeeded ? ", failed"
                                                 : ""));
        record["orders"] = orders;
        answer.push_back(record);
    }
    return answer;
}

Json link()
{
    const auto& session = *HostSessionManager::getInstance();
    const auto status = session.getStatus();
    const auto& times = session.roundTrips();
    Json answer { { "connected", status.isConnected() },
                  { "sent", status.sent },
                  { "received", status.received },
                  { "resent", status.resent },
                  { "givenUp", status.givenUp },
                  { "damaged", status.damaged },
                  { "repeated", status.repeated },
                  { "waiting", status.waiting },
                  { "roundTripMedianUs", times.at(0.5).count() },
                  { "roundTripP99Us", times.at(0.99).count() },
                  { "roundTripMaxUs", times.at(1).count() } };
    if (status.lastReceived != Platform::Clock::time_point())
        answer["lastReceivedForMs"] = msSince(status.lastReceived);
    return answer;
}

Json remote()
{
    Json answer = Json::object();
    add(answer, "the wired remote",
        [&]
        {
            const auto status = TLX70Dev::getInstance()->getStatus();
            answer = { { "connected", status.isThere },
                       { "line1", text(status.line1) },
                       { "line2", text(status.line2) },
                       { "dimmer", status.dimmer },
                       { "waitingJobs", status.waiting } };
        });
    return answer;
}

Json dsp()
{
    Json answer = Json::object();
    add(answer, "the audio control",
        [&]
        {
            const auto status = dspStatus();
            answer = { { "booted", status.isBooted },
                       { "channel", Dsp::audioChannelName(status.channel) },
                       { "input", text("0x" + juce::String::toHexString(status.input)) },
                       { "muted", status.isMuted },
                       { "alert", status.isAlerting },
                       { "muteReasons", muteReasons() },
                       { "words", status.blocks },
                       { "failures", status.failures } };
            if (!status.leftAlone.empty())
                answer["leftAlone"] = status.leftAlone;
            if (!status.lastFailure.empty())
            {
                answer["lastFailure"] = status.lastFailure;
                answer["lastFailureForMs"] = msSince(status.lastFailureAt);
            }
        });
    answer["waitingJobs"] = waitingJobs("DSP");
    return answer;
}

namespace
{

Json settingRecord(const Platform::SettingInfo& info)
{
    Json record { { "index", info.index }, { "name", info.name } };
    if (info.isText)
        record["value"] = text(Platform::VX_GetSetupValueString(info.index));
    else
    {
        const int value = Platform::VX_GetSetupValueInt(info.index);
        record["value"] = value;
        record["smallest"] = info.lowest;
        record["largest"] = info.highest;
    }
    std::string meaning = info.title;
    for (std::size_t i = 0; i < info.values.size(); ++i)
        meaning += (i == 0 ? ": " : ", ") +
                   (info.isText ? "" : std::to_string(info.lowest + static_cast<int>(i)) + " ") + info.values[i];
    record["meaning"] = meaning;
    return record;
}

} // namespace

Json settings(const std::string& name)
{
    Json answer = Json::array();
    for (const auto& info : Platform::allSettings())
        if (name.empty() || juce::String(info.name).equalsIgnoreCase(juce::String(name)) ||
            juce::String(info.title).equalsIgnoreCase(juce::String(name)) || std::to_string(info.index) == name)
            answer.push_back(settingRecord(info));
    if (answer.empty())
        throw Unknown("There is no setting \"" + name + "\".");
    return answer;
}

Json groups()
{
    Json answer = Json::array();
    for (const auto& group : Kernel::SystemEngine::getInstance()->getGroupStatus())
    {
        Json record { { "group", text(group.name) } };
        if (group.receiver != Kernel::noComponent)
        {
            record["component"] = text(Kernel::componentName(group.receiver));
            record["message"] = text(Kernel::messageName(group.message));
        }
        record["forMs"] = group.since == Platform::Clock::time_point() ? 0 : msSince(group.since);
        record["queued"] = group.queued;
        if (group.queued > 0)
        {
            record["next"] =
                text(Kernel::messageName(group.nextMessage) + " for " + Kernel::componentName(group.nextReceiver));
            record["queuedForMs"] = msSince(group.queuedSince);
        }
        record["deferred"] = group.deferred;
        answer.push_back(record);
    }
    return answer;
}

Json queues()
{
    Json answer = Json::array();
    const auto queue = [&](const std::string& name, std::size_t waiting, std::optional<std::size_t> most = {})
    {
        Json record { { "queue", name }, { "waiting", waiting } };
        if (most)
            record["most"] = *most;
        answer.push_back(record);
    };
    for (const auto& group : Kernel::SystemEngine::getInstance()->getGroupStatus())
        queue(text("messages of " + group.name), group.queued + group.deferred);
    for (const auto& worker : Kernel::DeviceWorker::getStatus())
        queue(text("jobs of " + worker.name), worker.waiting);
    queue("frames to the microcontroller", HostSessionManager::getInstance()->getStatus().waiting,
          EngineLayer::SendQueue::maxNormal + EngineLayer::SendQueue::maxUrgent);
    queue("messages to programs that start", EngineLayer::RemoteSessionManager::getInstance()->countWaiting());
    return answer;
}

Json counters()
{
    Json answer = Json::array();
    for (const auto& each : Platform::Counter::all())
        answer.push_back({ { "counter", each.name }, { "count", each.count }, { "meaning", each.meaning } });
    return answer;
}

Json latency()
{
    using Kernel::Cause;
    Json answer = Json::array();
    for (int kind = Cause::bytes + 1; kind < Cause::NUM_OF_KINDS; ++kind)
        for (int stage = 0; stage < Cause::NUM_OF_STAGES; ++stage)
        {
            const auto& times = Cause::times(static_cast<Cause::Kind>(kind), static_cast<Cause::Stage>(stage));
            if (const auto count = times.count(); count > 0)
                answer.push_back({ { "from", Cause::kindName(static_cast<Cause::Kind>(kind)) },
                                   { "to", Cause::stageName(static_cast<Cause::Stage>(stage)) },
                                   { "count", count },
                                   { "medianUs", times.at(0.5).count() },
                                   { "p90Us", times.at(0.9).count() },
                                   { "p99Us", times.at(0.99).count() },
                                   { "maxUs", times.at(1).count() } });
        }
    return answer;
}

} // namespace Diagnostics::Reports
