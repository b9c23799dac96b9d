#include "bench/checker/Exchange.h"

#include "EngineApi/ProgramTimes.h"
#include "bench/text/Screen.h"
#include "platform/channel/linux/IpcWire.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace Checker
{

using namespace EngineApi;
using namespace Platform;
using namespace Pubhead;

namespace
{

constexpr std::size_t longestTrace = 200;

/** What has to follow when a program is told something. */
struct Answer
{
    int told;
    int answer;
    const char* rule;
    int limitMs;
};

constexpr Answer answers[] {
    { RMSG_PAGE_SHOW, RMSG_PAGE_SHOW_READY, "P6", answerTimeoutMs },
    { RMSG_PAGE_HIDE, RMSG_PAGE_HIDE_READY, "P8", answerTimeoutMs },
    { RMSG_HEARTBEAT, RMSG_HEARTBEAT_REPLY, "P11", heartbeatPeriodMs },
    { RMSG_PAGE_NOTIFY, RMSG_STATE_TO_SYSTEM, "P14", powerOffAnswerMs },
};

/** Null when nothing has to. */
const Answer* answerTo(int told)
{
    const auto* found =
        std::find_if(std::begin(answers), std::end(answers), [&](const Answer& each) { return each.told == told; });
    return found != std::end(answers) ? found : nullptr;
}

bool isPageAnswer(int what)
{
    return what == RMSG_PAGE_SHOW_READY || what == RMSG_PAGE_HIDE_READY;
}

std::string nameOf(int what)
{
    return remoteMessageName(what).toStdString();
}

/** With its argument, where that is a page or a program. */
std::string words(int what, int arg1)
{
    switch (what)
    {
    case RMSG_PAGE_REQUEST_SHOW:
    case RMSG_PAGE_SHOW:
    case RMSG_PAGE_SHOW_READY:
    case RMSG_PAGE_HIDE:
    case RMSG_PAGE_HIDE_READY:
    case RMSG_PAGE_COVERED:
    case RMSG_PAGE_TOP_SHOWN:
    case RMSG_PAGE_NOTIFY:
    case RMSG_STATE_TO_SYSTEM:
        return nameOf(what) + " " +
               (arg1 >= 0 && arg1 <= NUM_OF_PAGES ? std::string(pageName(arg1)) : std::to_string(arg1));
    case RMSG_APP_HELLO:
    case RMSG_HEARTBEAT_REPLY:
        return nameOf(what) + " " + std::to_string(arg1);
    default:
        return nameOf(what);
    }
}

std::string timeText(milliseconds time)
{
    if (time % std::chrono::seconds(1) == milliseconds::zero())
        return std::to_string(std::chrono::duration_cast<std::chrono::seconds>(time).count()) + " s";
    return std::to_string(time.count()) + " ms";
}

milliseconds since(Clock::time_point time)
{
    return std::chrono::duration_cast<milliseconds>(Clock::now() - time);
}

std::string commandText(const AppCommandLine& line)
{
    return CmdLineHelper::genCommandLine(RemoteObjFormat::formatCommandLine(line)).toStdString();
}

std::string makeFolder()
{
    std::error_code error;
    auto pattern = (std::filesystem::temp_directory_path(error) / "headunit-check-XXXXXX").string();
    return !error && ::mkdtemp(pattern.data()) != nullptr ? pattern : "";
}

EngineSide::Fill contentOf(int what, int arg1, int arg2, const Bundle::Ptr& bundle)
{
    return [=](sd_bus_message* target)
    {
        const auto message = RemoteMessage::obtain();
        message->what = what;
        message->arg1 = arg1;
        message->arg2 = arg2;
        message->bundle = bundle;
        return IpcWire::append(target, *message);
    };
}

} // namespace

bool Subject::isInterrupted() const
{
    pollfd source { interruption, POLLIN, 0 };
    return ::poll(&source, 1, 0) > 0;
}

Exchange::Exchange(const Subject& subjectToCheck)
    : subject(subjectToCheck)
    , ownName(std::string(busNamePrefix) + appTypeName(subject.appType))
    , folder(makeFolder())
    , wake(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
    , shownPage(NUM_OF_PAGES)
{
}

Exchange::~Exchange()
{
    program.end(milliseconds::zero());
    program.endOrphans();
    side.reset();
    ::close(wake);
    std::error_code ignored;
    if (!folder.empty())
        std::filesystem::remove_all(folder, ignored);
}

bool Exchange::startBus()
{
    return succeeds(folder.empty() ? "no folder can be made for temporary files" : bus.start(folder)) && connect();
}

bool Exchange::stopBus()
{
    note("-- the bus ends");
    side.reset();
    bus.stop();
    owner.clear();
    return true;
}

bool Exchange::connect()
{
    auto next = std::make_unique<EngineSide>(static_cast<EngineSide::Listener&>(*this));
    ownConnections.clear();
    const bool connected = succeeds(next->connect(bus.address()));
    ownConnections.push_back(next->ownConnection());
    side = std::move(next);
    return connected;
}

bool Exchange::startProgram(const CommandLine& line)
{
    if (subject.draws && display.name().empty() && !succeeds(display.start(folder)))
        return false;
    const auto address = withoutIdentity(bus.address());
    Bench::Child::Options options { subject.path,
                                    {},
                                    { { "HEADUNIT_BUS", address },
                                      { "DBUS_SESSION_BUS_ADDRESS", address },
                                      { "DISPLAY", display.name() },
                                      { "WAYLAND_DISPLAY", "" } },
                                    folder + "/output",
                                    {} };
    if (line != nullptr)
        options.arguments = { "--command-line", commandText(*line) };
    note("-- the program is started" + (line != nullptr ? " with " + options.arguments.back() : ""));
    saidHello = false;
    return succeeds(program.start(options,
                                  [this](int endStatus)
                                  {
                                      status = endStatus;
                                      ::eventfd_write(wake, 1);
                                  }));
}

bool Exchange::engineComes()
{
    note("-- an engine comes");
    saidHello = false;
    return succeeds(side->ownName());
}

bool Exchange::engineGoes()
{
    note("-- the engine goes");
    return succeeds(side->flush()) && connect();
}

bool Exchange::engineIsReplaced()
{
    note("-- another engine takes its place");
    auto next = std::make_unique<EngineSide>(static_cast<EngineSide::Listener&>(*this));
    if (!succeeds(next->connect(bus.address())) || !succeeds(next->ownName()))
        return false;
    ownConnections.push_back(next->ownConnection());
    saidHello = false;
    side = std::move(next);
    return true;
}

bool Exchange::begin(const CommandLine& line)
{
    if (!(startBus() && engineComes() && startProgram(line) && isThere("P1") && helloIsDue("P2") && isAnswered() &&
          acknowledge()))
        return false;
    return line == nullptr || !line->isFrontShow() || requestIsDue(line->getPage());
}

bool Exchange::tell(int what, int arg1, int arg2)
{
    const auto* answer = answerTo(what);
    if (isGone(answer != nullptr ? answer->rule : "P12"))
        return false;
    oweFor(what, arg1);
    note("→ " + words(what, arg1));
    lastTold = what;
    return succeeds(side->tell(owner, contentOf(what, arg1, arg2, nullptr)));
}

bool Exchange::tellAll(int what)
{
    oweFor(what, subject.appType);
    note("→ all: " + words(what, 0));
    return succeeds(side->tellAll(contentOf(what, 0, 0, nullptr)));
}

bool Exchange::command(const CommandLine& line)
{
    if (isGone("P12"))
        return false;
    const auto text = commandText(*line);
    note("→ RMSG_COMMAND_LINE " + text);
    lastTold = RMSG_COMMAND_LINE;
    askedFor.clear();
    if (line->isFrontShow())
        requestIsDue(line->getPage());
    if (line->isPageHide() && line->getPage() == shownPage && shownPage != NUM_OF_PAGES)
        owe("P10", RMSG_PAGE_TOP_SHOWN, shownPage, reportTimeoutMs, "told " + text);
    return succeeds(side->tell(owner, contentOf(RMSG_COMMAND_LINE, 0, 0, RemoteObjFormat::formatCommandLine(*line))));
}

bool Exchange::tellRaw(const EngineSide::Fill& content, const std::string& text)
{
    if (isGone("P12"))
        return false;
    note("→ " + text);
    lastTold = 0;
    return succeeds(side->tell(owner, content));
}

bool Exchange::acknowledge()
{
    if (isGone("P2"))
        return false;
    note("→ RMSG_APP_HELLO_ACK");
    return succeeds(side->tell(owner, contentOf(RMSG_APP_HELLO_ACK, subject.appType, 0, nullptr), true));
}

bool Exchange::isThere(const char* rule)
{
    if (wait(Clock::now() + patient(milliseconds(engineAwayMs)), [this] { return !owner.empty(); }))
        return true;
    if (problem.empty())
        add(rule, status >= 0
                      ? "it ended (" + Bench::describeStatus(status) + ") before it owned " + ownName
                      : "it did not own " + ownName + " within " + timeText(patient(milliseconds(engineAwayMs))));
    return false;
}

bool Exchange::helloIsDue(const char* rule)
{
    owe(rule, RMSG_APP_HELLO, subject.appType, answerTimeoutMs, "with its name and an engine on the bus");
    return true;
}

bool Exchange::requestIsDue(int page, const char* rule)
{
    owe(rule, RMSG_PAGE_REQUEST_SHOW, page, requestDelayMs, "with a command line that wants the page in front");
    return true;
}

bool Exchange::hasEndpoint()
{
    const auto limit = patient(milliseconds(answerTimeoutMs));
    wait(Clock::now() + limit, [this] { return isAskedAnswered; });
    if (noEndpoint.empty())
        return !isGone("P2");
    // A library may say so of a method that gives no answer: what it does when it is told something is the proof.
    tell(RMSG_PAGE_HIDE, page());
    const bool hears = wait(Clock::now() + limit, [this] { return debts.empty(); });
    debts.clear();
    if (!hears && problem.empty())
        add("P1", std::string("a call of Post at ") + endpointPath + " failed: " + noEndpoint);
    return hears;
}

Clock::time_point Exchange::lastLimit() const
{
    auto last = Clock::time_point::min();
    for (const auto& debt : debts)
        // An answer that is late tells more than one that is missing.
        last = std::max(last, std::max(debt.since, lastSettled) + patient(debt.limit) + debt.limit);
    return last;
}

bool Exchange::isAnswered()
{
    while (!debts.empty() && wait(lastLimit(), [this, owed = debts.size()] { return debts.size() < owed; }))
    {
    }
    if (!problem.empty())
        return false;
    const bool complete = debts.empty();
    for (const auto& debt : debts)
        add(debt.rule, debt.cause +
                           (hasEnded() ? ", it ended (" + Bench::describeStatus(status) + ") and did not say "
                                       : ", it did not say ") +
                           words(debt.what, debt.arg1) +
                           (hasEnded() ? "" : " within " + timeText(patient(debt.limit))));
    debts.clear();
    return complete;
}

bool Exchange::isWell(const char* rule)
{
    if (isGone(rule))
        return false;
    if (!subject.hasHeartbeat)
        return look(milliseconds(answerTimeoutMs), rule);
    tellAll(RMSG_HEARTBEAT);
    debts.back().rule = rule;
    return isAnswered() && !isGone(rule);
}

bool Exchange::look(milliseconds howLong, const char* rule)
{
    wait(Clock::now() + howLong, [this] { return hasEnded(); });
    if (!hasEnded())
        return problem.empty();
    add(rule, "it ended (" + Bench::describeStatus(status) + ")");
    return false;
}

bool Exchange::ends(const char* rule, const char* cause, milliseconds earliest, milliseconds latest)
{
    const auto from = Clock::now();
    wait(from + patient(latest) + latest, [this] { return hasEnded(); });
    const auto took = since(from);
    debts.clear();
    const std::string prefix = std::string(cause) + ", it ";
    if (!problem.empty())
        return false;
    if (!hasEnded())
        add(rule, prefix + (status >= 0 ? "ended, but left its name to another process"
                                        : "did not end within " + timeText(patient(latest))));
    else if (status != 0)
        add(rule, prefix + "ended with " + Bench::describeStatus(status) + " and not with exit 0");
    else if (took < earliest)
        add(rule, prefix + "ended after " + timeText(took) + " already");
    else if (took > patient(latest))
        add(rule, prefix + "ended only after " + timeText(took));
    else
        return true;
    return false;
}

bool Exchange::becomesVisible(bool visible)
{
    if (display.name().empty())
        return false;
    // The display tells nobody; it is asked now and then.
    constexpr milliseconds pause { 20 };
    const auto until = Clock::now() + patient(milliseconds(answerTimeoutMs));
    while (Bench::isPageShown(display.name()) != visible && Clock::now() < until)
        wait(Clock::now() + pause, [this] { return hasEnded(); });
    return Bench::isPageShown(display.name()) == visible;
}

void Exchange::add(const std::string& rule, const std::string& what)
{
    note("✗ " + rule + ": " + what);
    // One of a kind is enough to go on.
    if (!isBroken(rule))
        faults.push_back({ rule, what });
}

bool Exchange::isBroken(const std::string& rule) const
{
    return std::any_of(faults.begin(), faults.end(), [&](const Fault& fault) { return fault.rule == rule; });
}

std::vector<std::string> Exchange::getTrace() const
{
    auto lines = trace;
    if (untraced > 0)
        lines.push_back("           ... and " + std::to_string(untraced) + " more");
    return lines;
}

std::string Exchange::output() const
{
    std::ifstream file(folder + "/output", std::ios::binary);
    return { std::istreambuf_iterator(file), {} };
}

void Exchange::onMessage(const std::string& connection, const RemoteMessage& message)
{
    const int what = message.what;
    note("← " + words(what, message.arg1));
    if (connection != owner)
    {
        if (what == RMSG_APP_HELLO && owner.empty())
            add("P2", "it said hello before it owned " + ownName);
        else
            add("P1", nameOf(what) + " came from a connection that does not own " + ownName);
    }
    saidHello = saidHello || what == RMSG_APP_HELLO;
    if (!saidHello)
        add("P3", "it said " + words(what, message.arg1) + " before its hello");
    if (what == RMSG_PAGE_REQUEST_SHOW)
        askedFor.push_back(message.arg1);
    const auto debt = std::find_if(debts.begin(), debts.end(),
                                   [&](const Debt& each) { return each.what == what && each.arg1 == message.arg1; });
    if (debt == debts.end())
        onUnasked(message);
    else
        settle(debt);
}

void Exchange::settle(std::vector<Debt>::iterator debt)
{
    const auto took = since(debt->since);
    if (floodRule.empty() && took > patient(debt->limit))
        add(debt->rule, debt->cause + ", it said " + words(debt->what, debt->arg1) + " only after " + timeText(took));
    const auto first = std::find_if(debts.begin(), debt, [](const Debt& each) { return isPageAnswer(each.what); });
    if (isPageAnswer(debt->what) && first != debt)
        add("P13", "it said " + words(debt->what, debt->arg1) + " before " + words(first->what, first->arg1));
    if (isPageAnswer(debt->what))
        shownPage = debt->what == RMSG_PAGE_SHOW_READY ? debt->arg1 : static_cast<int>(NUM_OF_PAGES);
    debts.erase(debt);
    lastSettled = Clock::now();
}

void Exchange::onUnasked(const RemoteMessage& message)
{
    const int what = message.what;
    const auto said = "it said " + words(what, message.arg1);
    // It is probably meant for what is owed, with a wrong argument.
    const auto meant = std::find_if(debts.begin(), debts.end(), [&](const Debt& each) { return each.what == what; });
    if (meant != debts.end())
    {
        add(what == RMSG_APP_HELLO ? "P2" : meant->rule,
            meant->cause + ", " + said + " and not " + words(meant->what, meant->arg1));
        debts.erase(meant);
        lastSettled = Clock::now();
        return;
    }
    const bool isRequest = what == RMSG_PAGE_REQUEST_SHOW;
    const std::string usualRule = isRequest ? "P5" : isPageAnswer(what) ? "P7" : "";
    if (usualRule.empty() && what != RMSG_PAGE_TOP_SHOWN)
        return;
    // One that says it anyhow does not say it for what it was just told.
    if (!unaskedRule.empty() && !isBroken(usualRule))
        add(unaskedRule, said + ", which nothing asked for");
    else if (lastTold == RMSG_PAGE_COVERED && !isBroken(usualRule))
        add("P9", "told RMSG_PAGE_COVERED, " + said);
    else if (isRequest)
        add(usualRule, std::count(askedFor.begin(), askedFor.end(), message.arg1) > 1
                           ? said + " again while it waited"
                           : said + ", and no command line wants the page in front");
    else if (!usualRule.empty())
        add(usualRule, said + " without being told to");
}

void Exchange::onOwner(const std::string& name, const std::string& connection)
{
    const bool isOurs = std::find(ownConnections.begin(), ownConnections.end(), connection) != ownConnections.end();
    if (name == ownName)
    {
        owner = connection;
        note("-- " + name + (connection.empty() ? " has no owner" : " is the program's"));
        return;
    }
    if (connection.empty() || isOurs || (side != nullptr && connection == side->ownConnection()))
        return;
    for (int type = 0; type < AppUnknown; ++type)
        if (name == std::string(busNamePrefix) + appTypeName(type))
            add("P1", "it owned " + name);
}

void Exchange::onAsked(const std::string& error)
{
    isAskedAnswered = true;
    noEndpoint = error;
}

bool Exchange::isGone(const std::string& rule)
{
    if (!problem.empty())
        return true;
    if (owner.empty())
        add(rule, status >= 0 ? "it ended (" + Bench::describeStatus(status) + ")" : "it gave " + ownName + " back");
    return owner.empty();
}

bool Exchange::succeeds(const std::string& text)
{
    if (problem.empty())
        problem = text;
    return problem.empty();
}

void Exchange::owe(const std::string& rule, int what, int arg1, int limitMs, const std::string& cause)
{
    debts.push_back({ floodRule.empty() ? rule : floodRule, what, arg1, milliseconds(limitMs), cause, Clock::now() });
}

void Exchange::oweFor(int what, int arg1)
{
    if (const auto* answer = answerTo(what); answer != nullptr)
        owe(answer->rule, answer->answer, arg1, answer->limitMs, "told " + words(what, arg1));
}

template <typename Done>
bool Exchange::wait(Clock::time_point until, const Done& done)
{
    for (;;)
    {
        // Whatever waits is looked at one by one, so that each step sees what came before the next.
        int handled = 1;
        while (!done() && side != nullptr && (handled = side->process()) > 0)
        {
        }
        if (done())
            return true;
        if (handled < 0)
            succeeds(std::string("the check's bus is gone: ") + std::strerror(-handled));
        const auto left = std::chrono::ceil<milliseconds>(until - Clock::now());
        if (subject.isInterrupted())
            succeeds("interrupted");
        if (left <= milliseconds::zero() || hasEnded() || !problem.empty())
            return false;
        pollfd descriptors[] = { { wake, POLLIN, 0 }, { subject.interruption, POLLIN, 0 }, { -1, 0, 0 } };
        if (side != nullptr)
            descriptors[2] = { side->descriptor(), side->pollEvents(), 0 };
        ::poll(descriptors, std::size(descriptors), static_cast<int>(left.count()));
        eventfd_t wakes = 0;
        ::eventfd_read(wake, &wakes);
    }
}

milliseconds Exchange::patient(milliseconds limit) const
{
    return std::chrono::duration_cast<milliseconds>(limit * subject.patience);
}

void Exchange::note(const std::string& line)
{
    constexpr double msPerSecond = 1000;
    std::array<char, 32> stamp {};
    std::snprintf(stamp.data(), stamp.size(), "%7.3f s  ", static_cast<double>(since(began).count()) / msPerSecond);
    if (trace.size() < longestTrace)
        trace.push_back(stamp.data() + line);
    else
        ++untraced;
}

} // namespace Checker
