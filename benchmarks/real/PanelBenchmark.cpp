// The panel of the simulated unit as whoever sits before it has it: how soon it is there, how often it draws, what it takes.
#include "bench/unit/Child.h"
#include "bench/unit/Journal.h"
#include "platform/base/ProcessUsage.h"
#include "support/XServer.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstring>
#include <poll.h>
#include <thread>
#include <xcb/damage.h>

namespace
{

using namespace std::chrono_literals;
using Bench::Clock;

constexpr std::chrono::seconds limit { 30 };

/** What is drawn on the display that DISPLAY names. */
class Eye
{
public:
    Eye()
        : connection(xcb_connect(nullptr, nullptr))
        , root(xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root)
    {
        const auto* extension = xcb_get_extension_data(connection, &xcb_damage_id);
        std::free(xcb_damage_query_version_reply(connection, xcb_damage_query_version(connection, 1, 1), nullptr));
        damaged = static_cast<std::uint8_t>(extension->first_event + XCB_DAMAGE_NOTIFY);
        xcb_damage_create(connection, xcb_generate_id(connection), root, XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
        xcb_flush(connection);
    }
    ~Eye() { xcb_disconnect(connection); }
    Eye(const Eye&) = delete;
    Eye& operator=(const Eye&) = delete;

    /** The next thing that is drawn; none at the deadline. */
    std::optional<xcb_rectangle_t> next(Clock::time_point deadline)
    {
        while (true)
        {
            while (auto* event = xcb_poll_for_event(connection))
            {
                const bool isDamage = (event->response_type & 0x7f) == damaged;
                const auto area = reinterpret_cast<const xcb_damage_notify_event_t*>(event)->area;
                std::free(event);
                if (isDamage)
                    return area;
            }
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
            pollfd source { xcb_get_file_descriptor(connection), POLLIN, 0 };
            if (left <= 0ms || ::poll(&source, 1, static_cast<int>(left.count())) <= 0)
                return {};
        }
    }

    /** The colour at a place of the screen; 0 is what lies there before anything is drawn. */
    std::uint32_t colourAt(std::int16_t x, std::int16_t y) const
    {
        constexpr std::uint32_t allPlanes = ~0u, colours = 0xffffff;
        const auto request = xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, root, x, y, 1, 1, allPlanes);
        auto* reply = xcb_get_image_reply(connection, request, nullptr);
        std::uint32_t colour = 0;
        if (reply != nullptr)
            std::memcpy(&colour, xcb_get_image_data(reply), sizeof colour);
        std::free(reply);
        return colour & colours;
    }

private:
    xcb_connection_t* connection;
    xcb_window_t root;
    std::uint8_t damaged = 0;
};

/** The simulated unit with its panel, which carries out a script if there is one. */
class PanelProcess
{
public:
    explicit PanelProcess(const juce::String& script = {})
    {
        std::vector<std::string> arguments { "--panel" };
        if (script.isNotEmpty())
        {
            file.getFile().replaceWithText(script);
            arguments.insert(arguments.end(), { "--script", file.getFile().getFullPathName().toStdString() });
        }
        const auto program =
            juce::File::getSpecialLocation(juce::File::currentExecutableFile).getSiblingFile("headunit-bench");
        process.start({ program.getFullPathName().toStdString(), arguments, {}, "/dev/null", {} });
    }
    ~PanelProcess() { process.end(limit); }
    PanelProcess(const PanelProcess&) = delete;
    PanelProcess& operator=(const PanelProcess&) = delete;

    /** False when nothing of it was drawn within the limit. */
    bool isSeen(Eye& eye) const
    {
        constexpr std::int16_t belowThePanes = 796;
        const auto deadline = Clock::now() + limit;
        while (eye.next(deadline))
            if (eye.colourAt(2, belowThePanes) != 0)
                return true;
        return false;
    }
    /** Of a core, in percent, from `before`, which this was at `since`. */
    double share(std::int64_t before, Clock::time_point since) const
    {
        const std::chrono::duration<double, std::milli> passed = Clock::now() - since;
        return 100.0 * static_cast<double>(processorMs() - before) / passed.count();
    }
    std::int64_t processorMs() const { return Platform::ProcessUsage::of(process.pid())->cpuMs; }

private:
    juce::TemporaryFile file { ".scenario" };
    Bench::Child process;
};

void firstPaint(benchmark::State& state)
{
    const XServer display("1280x800");
    Eye eye;
    std::vector<double> times;
    for ([[maybe_unused]] auto _ : state)
    {
        const auto start = Clock::now();
        const PanelProcess panel;
        if (!panel.isSeen(eye))
            return state.SkipWithError("the panel was not drawn");
        times.push_back(std::chrono::duration<double>(Clock::now() - start).count());
        state.SetIterationTime(times.back());
    }
    std::ranges::sort(times);
    state.counters["median_ms"] = 1e3 * times[times.size() / 2];
    state.counters["max_ms"] = 1e3 * times.back();
}
BENCHMARK(firstPaint)
    ->Name("Panel/firstPaint")
    ->UseManualTime()
    ->Iterations(10)
    ->Repetitions(1)
    ->Unit(benchmark::kMillisecond);

/** The panel's share of a core during `measure`, which is told its begin; `settle` comes before that. Both look on. */
template <typename Settle, typename Measure>
void onPanel(benchmark::State& state, const juce::String& script, const Settle& settle, const Measure& measure)
{
    const XServer display("1280x800");
    Eye eye;
    for ([[maybe_unused]] auto _ : state)
    {
        const PanelProcess panel(script);
        if (!panel.isSeen(eye))
            return state.SkipWithError("the panel was not drawn");
        settle(eye);
        const auto start = Clock::now();
        const auto before = panel.processorMs();
        measure(eye, start);
        state.counters["core_%"] = panel.share(before, start);
    }
}

/** A band of the equaliser goes up and down without a pause; counted is how often its middle is drawn: a picture comes in
    parts, one of which has it. */
void movingCurve(benchmark::State& state)
{
    constexpr int middleX = 536, middleY = 610;
    static constexpr auto duration = 5s;
    juce::String script("expect page fm settled\nexpect program menu connected\nset eq-preset 4\n");
    for (int i = 0; i < 3000; ++i)
        script << "set band4 " << std::abs(i % 24 - 12) << "\nwait 4ms\n";
    const auto settle = [](Eye& eye)
    {
        for (const auto moves = Clock::now() + 2s; eye.next(moves);)
            ;
    };
    const auto measure = [&state](Eye& eye, Clock::time_point start)
    {
        int pictures = 0;
        while (const auto area = eye.next(start + duration))
            pictures += area->x <= middleX && area->x + area->width > middleX && area->y <= middleY &&
                        area->y + area->height > middleY;
        state.counters["pictures/s"] = pictures / std::chrono::duration<double>(Clock::now() - start).count();
    };
    onPanel(state, script, settle, measure);
}
BENCHMARK(movingCurve)->Name("Panel/movingCurve")->Iterations(1)->Repetitions(1);

/** Nobody does anything, or the boat's voltage is measured once a second (`busy`). */
void atRest(benchmark::State& state)
{
    static constexpr auto settling = 10s, duration = 20s;
    juce::String script("expect page fm settled\n");
    for (int i = 0; i < 60; ++i)
        script << "wait 1s\n" << (state.range(0) != 0 ? "battery 12.6\n" : "");
    onPanel(
        state, script, [](Eye&) { std::this_thread::sleep_for(settling); },
        [](Eye&, Clock::time_point) { std::this_thread::sleep_for(duration); });
}
BENCHMARK(atRest)->Name("Panel/atRest")->ArgNames({ "busy" })->Arg(0)->Arg(1)->Iterations(1)->Repetitions(1);

} // namespace
