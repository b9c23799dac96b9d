#include "bench/unit/Programs.h"

#include "bench/console/Script.h"
#include "bench/text/Names.h"
#include "platform/channel/RemoteMessageIds.h"

#include <csignal>
#include <limits>
#include <nlohmann/json.hpp>
#include <sstream>
#include <utility>

namespace Bench
{

using nlohmann::json;
using namespace Platform;
using namespace Pubhead;

namespace
{

constexpr std::chrono::seconds endLimit { 10 };
/** Sub-code of RMSG_APP_EVENT: a page was chosen in the menu. */
constexpr int menuPageChosen = Platform::appEventMenuPage;

std::string programStream(int appType)
{
    return std::string("program ") + appTypeName(appType);
}

/** Nothing when the socket could not say which one it is: the system takes such numbers for many processes. */
void killProcess(int pid)
{
    if (pid > 0)
        ::kill(pid, SIGKILL);
}

} // namespace

Programs::Programs(Loop& loopToUse, Journal& journalToUse)
    : loop(loopToUse)
    , journal(journalToUse)
    , front(NUM_OF_PAGES)
    , playing(NUM_OF_PAGES)
{
    server.connected = [this](int connection, int pid) { pidOfConnection[connection] = pid; };
    server.received = [this](int connection, PacketLine::Packet packet) { onPacket(connection, packet); };
    server.closed = [this](int connection) { onClosed(connection); };
}

std::string Programs::start(const std::string& socketPath)
{
    const Loop::Turn turn(loop);
    server.setPath(socketPath);
    return server.open();
}

void Programs::stop()
{
    const auto left = running();
    const auto from = journal.end();
    for (const auto& [appType, program] : left)
        exit(appType);
    const auto deadline = Clock::now() + endLimit;
    for (const auto& [appType, program] : left)
        // The process number comes from the socket, and the connection is still there, so it is that very process.
        if (!journal.waitFor(from, deadline, isEvent(programStream(appType), "gone")) && running().contains(appType))
            killProcess(program.pid);
    const Loop::Turn turn(loop);
    server.close();
}

void Programs::kill()
{
    for (const auto& [appType, program] : running())
        killProcess(program.pid);
}

std::string Programs::Program::faultText() const
{
    std::string text;
    const auto add = [&](bool holds, const std::string& fault)
    {
        if (holds)
            text += (text.empty() ? "" : ", ") + fault;
    };
    add(silent, "silent");
    add(slow.count() > 0, "slow " + std::to_string(slow.count()) + " ms");
    add(hung, "hung");
    return text;
}

std::map<int, Programs::Program> Programs::running() const
{
    const Loop::Turn turn(loop);
    return programs;
}

int Programs::pageInFront() const
{
    const Loop::Turn turn(loop);
    return front;
}

void Programs::onPacket(int connection, PacketLine::Packet packet)
{
    const auto message = json::parse(packet.begin(), packet.end(), nullptr, false);
    if (!message.is_object() || !message.contains("event") || !message["event"].is_string())
    {
        journal.add("program ?", "sent a packet that is no event");
        return;
    }
    const auto number = [&](const char* key)
    { return message.contains(key) && message[key].is_number_integer() ? message[key].get<int>() : 0; };
    const auto text = [&](const char* key)
    { return message.contains(key) && message[key].is_string() ? message[key].get<std::string>() : std::string(); };
    const auto event = text("event");
    const auto at = message.contains("at") && message["at"].is_number_integer()
                        ? Clock::time_point(std::chrono::nanoseconds(message["at"].get<std::int64_t>()))
                        : Clock::now();

    if (event == "hello")
    {
        onHello(connection, number("app"), text("commandLine"), at);
        return;
    }
    const auto appType = appOfConnection(connection);
    if (appType == AppUnknown)
        return;
    report(appType, { event, text("detail"), number("page"), at });
}

void Programs::report(int appType, const Report& what)
{
    const Loop::Turn turn(loop);
    const auto found = programs.find(appType);
    if (found == programs.end())
        return; // it has just ended
    const auto& event = what.event;
    if (event == "heartbeat")
        ++found->second.heartbeats;
    else if (event == "shown" || event == "hidden" || event == "covered" || event == "confirmed")
        onPage(what.page, event, what.at);
    else
    {
        if (event == "connected")
            found->second.connected = true;
        if (event == "command-line")
            onCommandLine(appType, what.detail);
        journal.add(programStream(appType), event + (what.detail.empty() ? "" : " " + what.detail), what.at);
    }
}

void Programs::came(int appType, int pid)
{
    const Loop::Turn turn(loop);
    if (const auto found = programs.find(appType); found != programs.end() && found->second.takesOrders())
        return; // it reports itself
    programs[appType] = { .pid = pid, .source = NUM_OF_PAGES };
    journal.add(programStream(appType), "running");
}

void Programs::went(int appType)
{
    const Loop::Turn turn(loop);
    if (const auto found = programs.find(appType); found != programs.end() && !found->second.takesOrders())
        onGone(appType);
}

void Programs::engineStarted()
{
    const Loop::Turn turn(loop);
    const auto* info = pageInfo(front);
    const auto found = info != nullptr ? programs.find(info->appType) : programs.end();
    if (found != programs.end() && !found->second.takesOrders())
        onPage(front, "hidden", Clock::now());
}

void Programs::onHello(int connection, int appType, const std::string& commandLine, Clock::time_point at)
{
    if (pageOfApp(appType) == nullptr)
        return;
    programs[appType] = { .connection = connection, .pid = pidOfConnection[connection], .source = NUM_OF_PAGES };
    journal.add(programStream(appType), "running", at);
    if (!commandLine.empty())
        journal.add(programStream(appType), "started with " + commandLine, at);
    tellSurroundings(appType);
}

void Programs::onClosed(int connection)
{
    pidOfConnection.erase(connection);
    const auto appType = appOfConnection(connection);
    if (appType != AppUnknown)
        onGone(appType);
}

void Programs::onGone(int appType)
{
    programs.erase(appType);
    if (const auto* info = pageInfo(playing); info != nullptr && info->appType == appType)
        setPlaying(NUM_OF_PAGES);
    std::erase_if(shown, [&](int page) { return pageInfo(page)->appType == appType; });
    journal.add(programStream(appType), "gone");
    if (const auto* info = pageInfo(front); info != nullptr && info->appType == appType)
        setFront(NUM_OF_PAGES, Clock::now());
}

void Programs::onPage(int page, const std::string& change, Clock::time_point at)
{
    journal.add(std::string("page ") + pageName(page), change, at);
    if (change == "shown")
    {
        std::erase(shown, page);
        shown.insert(shown.begin(), page);
    }
    if (change == "shown")
        setFront(page, at);
    else if (change != "confirmed" && page == front)
        setFront(NUM_OF_PAGES, at);
}

void Programs::onCommandLine(int appType, const std::string& text)
{
    std::istringstream words(text);
    std::string what, page;
    words >> what >> page;
    const auto named = findPage(page);
    auto& source = programs[appType].source;
    if (what == "sourceEnter")
        source = named;
    else if (what == "sourceExit" && source == named)
        source = NUM_OF_PAGES;
    if (what == "sourceEnter" && !isRearZone(named))
        setPlaying(named);
    else if (what == "sourceExit" && named == playing)
        setPlaying(NUM_OF_PAGES);
    // A page that hides comes back when it is in front of its own source; any other has been left.
    if (what == "sourceExit" || (what == "pageHide" && source != named))
        std::erase(shown, named);
}

void Programs::tellSurroundings(int appType)
{
    order(appType, { { "order", "surroundings" }, { "night", night }, { "plays", playing } });
}

void Programs::tellSurroundings()
{
    for (const auto& [appType, program] : programs)
        tellSurroundings(appType);
}

void Programs::setPlaying(int page)
{
    playing = page;
    tellSurroundings();
}

void Programs::setNight(bool on)
{
    const Loop::Turn turn(loop);
    if (std::exchange(night, on) == on)
        return;
    journal.add("colours", on ? "of the night" : "of the day");
    tellSurroundings();
}

std::vector<int> Programs::pageStack() const
{
    const Loop::Turn turn(loop);
    return shown;
}

void Programs::setFront(int page, Clock::time_point at)
{
    if (front == page)
        return;
    front = page;
    journal.add("front", page == NUM_OF_PAGES ? "none" : pageName(page), at);
}

int Programs::appOfConnection(int connection) const
{
    for (const auto& [appType, program] : programs)
        if (program.connection == connection)
            return appType;
    return AppUnknown;
}

bool Programs::order(int appType, const json& what, int signal, const std::function<void(Program&)>& note)
{
    const Loop::Turn turn(loop);
    const auto found = programs.find(appType);
    if (found == programs.end())
        return false;
    if (!found->second.takesOrders() && (signal == 0 || ::kill(found->second.pid, signal) != 0))
        return false;
    if (note)
        note(found->second);
    if (!found->second.takesOrders())
        return true;
    const auto text = what.dump();
    return server.send(found->second.connection, { reinterpret_cast<const std::uint8_t*>(text.data()), text.size() });
}

std::string Programs::whyRefused(int appType) const
{
    const auto all = running();
    const auto found = all.find(appType);
    return appTypeName(appType) + std::string(found == all.end() ? " does not run"
                                              : found->second.takesOrders()
                                                  ? " does not take the order"
                                                  : " is not the bench's own: of the bench it hears only "
                                                    "crash, hang, wake and exit");
}

bool Programs::setSilent(int appType, bool silent)
{
    return order(appType, { { "order", "silent" }, { "on", silent } }, 0,
                 [silent](Program& program) { program.silent = silent; });
}

bool Programs::setSlow(int appType, std::chrono::milliseconds delay)
{
    return order(appType, { { "order", "slow" }, { "ms", delay.count() } }, 0,
                 [delay](Program& program) { program.slow = delay; });
}

bool Programs::crash(int appType)
{
    return order(appType, { { "order", "crash" } }, SIGKILL);
}

bool Programs::hang(int appType)
{
    return order(appType, { { "order", "hang" } }, SIGSTOP, [](Program& program) { program.hung = true; });
}

bool Programs::wakeUp(int appType)
{
    const Loop::Turn turn(loop);
    const auto found = programs.find(appType);
    if (found == programs.end() || found->second.pid <= 0)
        return false;
    found->second.hung = false;
    return ::kill(found->second.pid, SIGCONT) == 0;
}

bool Programs::exit(int appType)
{
    return order(appType, { { "order", "exit" } }, SIGTERM);
}

bool Programs::sendMessage(int appType, int what, int arg1, int arg2)
{
    return order(appType, { { "order", "send" }, { "what", what }, { "arg1", arg1 }, { "arg2", arg2 } });
}

bool Programs::changeSetting(int appType, int setting, const std::string& value)
{
    json what { { "order", "set" }, { "setting", setting }, { "value", value } };
    if (const auto number = parseNumber(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()))
        what["value"] = *number;
    return order(appType, what);
}

std::string Programs::changeSetting(int setting, const std::string& value)
{
    const auto carrier = carrierFor(AppSetup);
    return changeSetting(carrier, setting, value) ? "" : "no program is connected that could change it";
}

std::string Programs::tell(int appType, const std::string& words)
{
    constexpr std::chrono::seconds answerLimit { 60 };
    const std::string refused = "refused ";
    const auto from = journal.end();
    if (!order(appType, { { "order", "do" }, { "words", words } }))
        return whyRefused(appType);
    const std::string name = appTypeName(appType);
    if (const auto all = running(); all.contains(appType) && all.at(appType).hung)
        return name + " hangs, and hears of it when it goes on: program " + name + " wake";
    const auto answer = journal.waitFor(from, Clock::now() + answerLimit,
                                        [&](const Event& event)
                                        {
                                            return event.stream == programStream(appType) &&
                                                   (event.text == "did " + words || event.text.starts_with(refused));
                                        });
    if (!answer)
        return name + " does not answer";
    return answer->text.starts_with(refused) ? name + ": " + answer->text.substr(refused.size()) : "";
}

bool Programs::showOnRemote(int appType, const std::string& line1, const std::string& line2)
{
    return order(appType, { { "order", "text" }, { "line1", line1 }, { "line2", line2 } });
}

bool Programs::sendWindowMessage(int appType, int message, int wParam, int lParam)
{
    return order(appType, { { "order", "window" }, { "what", message }, { "arg1", wParam }, { "arg2", lParam } });
}

int Programs::carrierFor(int appType) const
{
    const Loop::Turn turn(loop);
    const auto isConnected = [this](int type)
    {
        const auto found = programs.find(type);
        return found != programs.end() && found->second.connected && found->second.takesOrders();
    };
    if (isConnected(appType))
        return appType;
    if (const auto* info = pageInfo(front); info != nullptr && isConnected(info->appType))
        return info->appType;
    for (const auto& [type, program] : programs)
        if (isConnected(type))
            return type;
    return AppUnknown;
}

std::string Programs::requestPage(int page)
{
    const auto* info = pageInfo(page);
    const auto carrier = info != nullptr ? carrierFor(info->appType) : static_cast<int>(AppUnknown);
    if (carrier == AppUnknown)
        return "no program is connected that could ask for the page";
    const bool sent = page == mbEQ ? sendMessage(carrier, RMSG_EQ_PAGE_SHOW, 0, 0)
                                   : sendMessage(carrier, RMSG_APP_EVENT, menuPageChosen, page);
    return sent ? "" : std::string(appTypeName(carrier)) + " does not take the order";
}

std::string Programs::stopPage(int page)
{
    const auto* info = pageInfo(page);
    const auto appType = info != nullptr ? info->appType : static_cast<int>(AppUnknown);
    const auto carrier = page == mbEQ ? carrierFor(appType) : appType;
    const bool sent =
        page == mbEQ ? sendMessage(carrier, RMSG_EQ_PAGE_HIDE, 0, 0) : sendMessage(carrier, RMSG_SOURCE_STOP, 0, 0);
    return sent ? "" : whyRefused(appType);
}

} // namespace Bench
