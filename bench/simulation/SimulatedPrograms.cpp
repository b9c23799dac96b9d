#include "bench/simulation/SimulatedPrograms.h"

#include "bench/text/Names.h"
#include "platform/channel/RemoteMessageIds.h"

namespace Simulation
{

using namespace Platform;
using doubles::ProcessDouble;

namespace
{

constexpr int toAll = -1;
constexpr int bySegmentationFault = 139;
constexpr const char* commandLineOption = "--command-line";
constexpr std::chrono::seconds slowStart { 3 };
constexpr std::chrono::milliseconds engineAwayLimit { 10'000 };

int appTypeOfPath(const juce::String& path)
{
    const auto name = path.fromLastOccurrenceOf("/", false, false);
    for (const int appType : Bench::allApps())
        if (name == Pubhead::appTypeName(appType))
            return appType;
    return Pubhead::AppUnknown;
}

} // namespace

struct SimulatedPrograms::Program : private BenchProgram::Outside
{
    Program(SimulatedPrograms& ownerToUse, int type, int processId, const juce::String& line, Clock::time_point begins)
        : owner(ownerToUse)
        , appType(type)
        , pid(processId)
        , ready(begins)
        , model(type, line, *this)
    {
    }

    std::optional<Clock::time_point> due() const
    {
        if (hangs)
            return {};
        std::optional<Clock::time_point> next;
        const auto consider = [&](std::optional<Clock::time_point> each)
        {
            if (each && (!next || *each < *next))
                next = each;
        };
        if (!here && owner.bus)
            consider(ready);
        if (!inbox.empty())
            consider(inbox.front().first);
        if (!outbox.empty())
            consider(outbox.front().first);
        consider(givesUp);
        return next;
    }

    void run()
    {
        const auto now = Clock::now();
        if (!here && owner.bus && ready <= now)
        {
            here = true;
            owner.channel.post([type = appType, process = pid] { IpcDouble::setPresent(type, true, process); });
            awaitEngine(true);
            model.engineIsPresent(true);
        }
        else if (!outbox.empty() && outbox.front().first <= now)
        {
            const auto message = outbox.front().second;
            outbox.pop_front();
            owner.channel.post(
                [type = appType, message, &lookout = owner.lookout]
                {
                    if (!IPCMsg::MessageHelper::isPresent(type))
                        return;
                    lookout.spoken.tell(type, message);
                    IpcDouble::injectMessage(type, message.what, message.arg1, message.arg2, message.bundle);
                });
            if (message.what == RMSG_APP_HELLO && Scheduler::get().getChance().happens(owner.habits.failedStarts))
                ProcessDouble::end(pid, bySegmentationFault);
        }
        else if (!inbox.empty() && inbox.front().first <= now)
        {
            const auto message = inbox.front().second;
            inbox.pop_front();
            auto carried = RemoteMessage::obtain();
            carried->what = message.what;
            carried->arg1 = message.arg1;
            carried->arg2 = message.arg2;
            carried->bundle = message.bundle;
            model.handle(*carried);
            RemoteMessage::recycle(std::move(carried));
        }
        else if (givesUp && *givesUp <= now)
            quit();
    }

    void leaveBus()
    {
        if (!std::exchange(here, false))
            return;
        owner.channel.post([type = appType] { IpcDouble::setPresent(type, false); });
        outbox.clear(); // what it was told has reached it
        connected.reset();
        model.engineIsPresent(false);
    }

    void hear(const IpcDouble::Posted& message)
    {
        // On the channel nothing overtakes what was posted before.
        auto at = Clock::now() + owner.upTo(owner.habits.answer);
        if (!inbox.empty())
            at = std::max(at, inbox.back().first);
        inbox.emplace_back(at, message);
    }

    SimulatedPrograms& owner;
    const int appType;
    const int pid;
    const Clock::time_point ready;
    BenchProgram::ProgramModel model;
    bool here = false, hangs = false;
    std::optional<Clock::time_point> connected;
    std::optional<Clock::time_point> givesUp;
    std::deque<std::pair<Clock::time_point, IpcDouble::Posted>> inbox, outbox;

private:
    void post(int what, int arg1, int arg2, Bundle::Ptr bundle) override
    {
        if (!here)
            return; // nobody carries it
        const auto last = outbox.empty() ? Clock::now() : outbox.back().first;
        const int times = 1 + (Scheduler::get().getChance().happens(owner.habits.answersTwice) ? 1 : 0);
        for (int i = 0; i < times; ++i)
            outbox.emplace_back(last, IpcDouble::Posted { Pubhead::AppMain, what, arg1, arg2, bundle });
    }
    void postToWindow(int message, int wParam, int lParam) override
    {
        owner.channel.post([=] { IpcDouble::injectWindowMessage(message, wParam, lParam); });
    }
    void report(const char* event, const juce::String& detail) override
    {
        if (std::string_view(event) == "connected")
            connected = Clock::now();
        owner.journal.add(stream(), (event + (detail.isEmpty() ? "" : " " + detail)).toStdString());
    }
    void reportPage(const char* event, int page) override
    {
        owner.journal.add(std::string("page ") + Pubhead::pageName(page), event);
    }
    void show(int) override {}
    void clear() override {}
    void showSource(int) override {}
    void contentChanged() override {}
    void contentChangesSoon() override {}
    void awaitEngine(bool on) override { givesUp = on ? std::optional(Clock::now() + engineAwayLimit) : std::nullopt; }
    void quit() override { ProcessDouble::end(pid); }

    std::string stream() const { return std::string("program ") + Pubhead::appTypeName(appType); }
};

SimulatedPrograms::SimulatedPrograms(Bench::Journal& journalToUse, const Lookout& lookoutToTell)
    : journal(journalToUse)
    , lookout(lookoutToTell)
{
    ProcessDouble::onLaunch([this](const ProcessDouble::Launch& launch) { begin(launch); });
    ProcessDouble::onEnd([this] { someEnded = true; });
    IpcDouble::onPost([this](const IpcDouble::Posted& posted) { hear(posted); });
    Scheduler::get().addSource({ [this] { return due(); }, [this] { run(); } });
}

SimulatedPrograms::~SimulatedPrograms()
{
    IpcDouble::onPost({});
    ProcessDouble::onLaunch({});
    ProcessDouble::onEnd({});
}

std::chrono::milliseconds SimulatedPrograms::upTo(std::chrono::milliseconds longest) const
{
    return std::chrono::milliseconds(Scheduler::get().getChance().between(0, static_cast<int>(longest.count())));
}

SimulatedPrograms::Program* SimulatedPrograms::findProgram(int appType) const
{
    const auto found = std::ranges::find_if(programs, [=](const auto& program) { return program->appType == appType; });
    return found == programs.end() ? nullptr : found->get();
}

BenchProgram::ProgramModel* SimulatedPrograms::findCarrier(int appType)
{
    if (isConnected(appType))
        return find(appType);
    const auto shows = [](const auto& program) { return program->model.getShownPage() != Pubhead::NUM_OF_PAGES; };
    for (const bool inFront : { true, false })
        for (const auto& program : programs)
            if (program->connected && shows(program) == inFront)
                return &program->model;
    return nullptr;
}

BenchProgram::ProgramModel* SimulatedPrograms::find(int appType)
{
    auto* program = findProgram(appType);
    return program == nullptr ? nullptr : &program->model;
}

bool SimulatedPrograms::isConnected(int appType) const
{
    const auto* program = findProgram(appType);
    return program != nullptr && program->connected.has_value();
}

SimulatedPrograms::Health SimulatedPrograms::health(int appType) const
{
    Health health;
    if (const auto found = gone.find(appType); found != gone.end())
        health.gone = found->second;
    if (const auto* program = findProgram(appType))
    {
        health.connected = program->connected;
        health.answers = program->connected && answers(*program);
    }
    return health;
}

bool SimulatedPrograms::answers(const Program& program) const
{
    return bus && !program.hangs && !program.model.isSilent();
}

std::vector<int> SimulatedPrograms::unwell() const
{
    std::vector<int> types;
    for (const auto& program : programs)
        if (program->connected && !answers(*program))
            types.push_back(program->appType);
    return types;
}

bool SimulatedPrograms::isHung(int appType) const
{
    const auto* program = findProgram(appType);
    return program != nullptr && program->hangs;
}

std::vector<int> SimulatedPrograms::running() const
{
    std::vector<int> types;
    for (const auto& program : programs)
        types.push_back(program->appType);
    return types;
}

void SimulatedPrograms::crash(int appType)
{
    if (const auto* program = findProgram(appType))
        ProcessDouble::end(program->pid, bySegmentationFault);
}

void SimulatedPrograms::quit(int appType)
{
    if (const auto* program = findProgram(appType))
        ProcessDouble::end(program->pid);
}

void SimulatedPrograms::hang(int appType)
{
    if (auto* program = findProgram(appType))
        program->hangs = true;
}

void SimulatedPrograms::wakeUp(int appType)
{
    if (auto* program = findProgram(appType))
        program->hangs = false;
}

void SimulatedPrograms::setBus(bool on)
{
    if (on == std::exchange(bus, on))
        return;
    journal.add("bus", on ? "running" : "stopped");
    if (!on)
        for (const auto& program : programs)
            program->leaveBus();
}

bool SimulatedPrograms::areIdle() const
{
    return channel.isIdle() &&
           std::ranges::all_of(programs, [](const auto& program)
                               { return program->here && program->inbox.empty() && program->outbox.empty(); });
}

std::optional<int> SimulatedPrograms::runningTwice() const
{
    for (auto one = programs.begin(); one != programs.end(); ++one)
        for (auto other = programs.begin(); other != one; ++other)
            if ((*one)->appType == (*other)->appType && ProcessDouble::isRunning((*one)->pid) &&
                ProcessDouble::isRunning((*other)->pid))
                return (*one)->appType;
    return {};
}

void SimulatedPrograms::hear(const IpcDouble::Posted& posted)
{
    const BenchPart part;
    IpcDouble::takePosted(); // nobody else wants it
    IpcDouble::takeNamedBroadcasts();
    lookout.posted.tell(posted);
    for (const auto& program : programs)
        if (program->here && (posted.appType == program->appType || posted.appType == toAll))
            program->hear(posted);
    // A program may do what it is told before whoever has told it goes on.
    Scheduler::get().letOthersRun();
}

std::optional<Clock::time_point> SimulatedPrograms::due() const
{
    if (someEnded)
        return Clock::now();
    std::optional<Clock::time_point> next;
    for (const auto& program : programs)
        if (const auto each = program->due(); each && (!next || *each < *next))
            next = each;
    return next;
}

void SimulatedPrograms::run()
{
    removeEnded();
    std::vector<Program*> ready;
    for (const auto& program : programs)
        if (const auto due = program->due(); due && *due <= Clock::now())
            ready.push_back(program.get());
    if (!ready.empty())
        ready[Scheduler::get().getChance().below(ready.size())]->run();
}

void SimulatedPrograms::begin(const ProcessDouble::Launch& launch)
{
    const BenchPart part;
    const int appType = appTypeOfPath(launch.path);
    const int option = launch.arguments.indexOf(commandLineOption);
    const auto line = option >= 0 ? launch.arguments[option + 1] : juce::String();
    const bool slow = Scheduler::get().getChance().happens(habits.slowStarts);
    const auto begins = Clock::now() + (slow ? slowStart : upTo(habits.start));
    journal.add(std::string("program ") + Pubhead::appTypeName(appType), "started");
    programs.push_back(std::make_unique<Program>(*this, appType, launch.pid, line, begins));
}

void SimulatedPrograms::removeEnded()
{
    if (!std::exchange(someEnded, false))
        return;
    for (auto it = programs.begin(); it != programs.end();)
    {
        auto& program = **it;
        if (ProcessDouble::isRunning(program.pid))
        {
            ++it;
            continue;
        }
        journal.add(std::string("program ") + Pubhead::appTypeName(program.appType), "gone");
        gone[program.appType] = Clock::now();
        channel.post(
            [type = program.appType, pid = program.pid]
            {
                if (IPCMsg::MessageHelper::ownerProcess(type) == pid)
                    IpcDouble::setPresent(type, false);
            });
        it = programs.erase(it);
    }
    ProcessDouble::forgetEnded();
}

} // namespace Simulation
