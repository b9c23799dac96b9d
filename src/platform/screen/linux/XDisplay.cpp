#include "platform/screen/linux/XDisplay.h"

#include "platform/base/Logger.h"
#include "platform/base/Threads.h"
#include "platform/config/Configuration.h"

#include <algorithm>
#include <array>
#include <poll.h>

namespace Platform
{

namespace
{

using namespace std::chrono_literals;

constexpr Log logger { "platform/XDisplay", "XDisplay" };

constexpr auto firstLookLimit = 2s;
constexpr auto retryPause = 500ms;
/** As long as any thread of the unit gets to end. */
constexpr auto stopLimit = 200ms;

using Clients = std::vector<std::shared_ptr<XClient>>;

/** For `poll`; rounded up, so that the time has come when it returns. */
int untilDue(const Clients& clients)
{
    std::optional<Clock::time_point> first;
    for (const auto& each : clients)
        if (const auto due = each->due(); due.has_value() && (!first.has_value() || *due < *first))
            first = due;
    if (!first.has_value())
        return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*first - Clock::now());
    return static_cast<int>(std::max(left, 0ms).count());
}

} // namespace

struct XDisplay::State
{
    explicit State(std::string displayName)
        : name(std::move(displayName))
    {
    }

    void run()
    {
        for (bool missed = false; !isStopping(); missed = true)
        {
            const auto display = std::make_shared<XDisplayState>(name);
            int error = 0;
            const auto connection = XConnection::open(display, error);
            auto forRequests = connection != nullptr ? XConnection::open(display, error) : nullptr;
            if (forRequests != nullptr)
            {
                if (missed)
                    logger().info("found the X display \"%s\"", name.c_str());
                publish(std::move(forRequests));
                serve(*connection);
            }
            else if (!missed)
                logger().error("no X display \"%s\" (error %d)", name.c_str(), error);
            publish(nullptr);
            pause();
        }
        const std::lock_guard guard(lock);
        ended = true;
        changed.notify_all();
    }

    bool isStopping()
    {
        const std::lock_guard guard(lock);
        return stopping;
    }

    void publish(std::shared_ptr<XConnection> connection)
    {
        const std::lock_guard guard(lock);
        requests = std::move(connection);
        looked = true;
        changed.notify_all();
    }

    void pause()
    {
        std::unique_lock guard(lock);
        changed.wait_for(guard, retryPause, [this] { return stopping; });
    }

    void serve(XConnection& x)
    {
        std::array<pollfd, 2> waiting { { { woken.getDescriptor(), POLLIN, 0 },
                                          { xcb_get_file_descriptor(x.get()), POLLIN, 0 } } };
        Clients present;
        while (!x.isLost() && tend(x, present))
        {
            xcb_flush(x.get());
            // What was sent until here may have taken events off the descriptor: they are looked for before it is.
            bool handled = false;
            while (const XReply<xcb_generic_event_t> event { xcb_poll_for_event(x.get()) })
            {
                handled = true;
                for (const auto& each : present)
                    each->handle(x, *event);
            }
            if (!handled)
                poll(waiting.data(), waiting.size(), untilDue(present));
        }
    }

    /** Brings the present clients up to date; false when the display is to be left. */
    bool tend(XConnection& x, Clients& present)
    {
        woken.clear();
        Clients wanted;
        {
            const std::lock_guard guard(lock);
            if (stopping)
                return false;
            wanted = clients;
        }
        const auto lacks = [](const Clients& list, const auto& client)
        { return std::find(list.begin(), list.end(), client) == list.end(); };
        for (const auto& each : present)
            if (lacks(wanted, each))
                each->leave(x);
        for (const auto& each : wanted)
            if (lacks(present, each))
                each->appear(x);
        present = std::move(wanted);
        for (const auto& each : present)
            each->update(x);
        return true;
    }

    const std::string name;
    WakeUp woken;
    std::mutex lock;
    std::condition_variable changed;
    std::shared_ptr<XConnection> requests;
    Clients clients;
    bool looked = false;
    bool stopping = false;
    bool ended = false;
};

std::shared_ptr<XDisplay> XDisplay::current()
{
    static std::mutex lock;
    // Not destroyed: other threads may ask while the process ends, and what the display holds is given back then
    // anyhow.
    static auto& name = *new std::string;
    static auto& display = *new std::shared_ptr<XDisplay>;
    const std::lock_guard guard(lock);
    const char* environment = std::getenv("DISPLAY");
    const std::string wanted =
        environment != nullptr && Configuration::get().display == "auto" ? environment : std::string();
    // Another name comes up between tests only.
    if (wanted != name)
    {
        name = wanted;
        display = name.empty() ? nullptr : std::make_shared<XDisplay>(name);
    }
    return display;
}

std::shared_ptr<XConnection> XDisplay::connection()
{
    const auto display = current();
    return display != nullptr ? display->requests() : nullptr;
}

XDisplay::XDisplay(const std::string& name)
    : state(std::make_shared<State>(name))
    , thread(
          [kept = state]
          {
              enterThread("display");
              kept->run();
          })
{
}

XDisplay::~XDisplay()
{
    std::unique_lock guard(state->lock);
    state->stopping = true;
    state->changed.notify_all();
    state->woken.set();
    const bool ended = state->changed.wait_for(guard, stopLimit, [this] { return state->ended; });
    guard.unlock();
    if (ended)
    {
        thread.join();
        return;
    }
    logger().error("the display \"%s\" does not answer, its thread is left", state->name.c_str());
    thread.detach();
}

std::shared_ptr<XConnection> XDisplay::requests()
{
    std::unique_lock guard(state->lock);
    state->changed.wait_for(guard, firstLookLimit, [this] { return state->looked || state->stopping; });
    // Once is enough: whoever asks later finds what there is.
    state->looked = true;
    if (state->requests != nullptr && state->requests->isLost())
        return nullptr;
    return state->requests;
}

void XDisplay::add(std::shared_ptr<XClient> client)
{
    {
        const std::lock_guard guard(state->lock);
        state->clients.push_back(std::move(client));
    }
    wake();
}

void XDisplay::remove(const std::shared_ptr<XClient>& client)
{
    {
        const std::lock_guard guard(state->lock);
        std::erase(state->clients, client);
    }
    wake();
}

void XDisplay::wake()
{
    state->woken.set();
}

} // namespace Platform
