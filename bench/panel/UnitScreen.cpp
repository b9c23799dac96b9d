#include "bench/panel/UnitScreen.h"

#include <array>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/ipc.h>
#include <sys/shm.h>
#include <unistd.h>
#include <xcb/damage.h>
#include <xcb/shm.h>
#include <xcb/xcb.h>

namespace BenchPanel
{

namespace
{

constexpr std::size_t bytesPerPixel = 4;
/** Several programs draw at once; nobody sees more pictures than these. */
constexpr std::chrono::milliseconds leastInterval { 16 };

struct Free
{
    void operator()(void* reply) const { std::free(reply); }
};

template <typename Reply>
std::unique_ptr<Reply, Free> owned(Reply* reply)
{
    return std::unique_ptr<Reply, Free>(reply);
}

} // namespace

/** The connection with the display, and the memory that both share. */
struct UnitScreen::Connection
{
    xcb_connection_t* xcb = nullptr;
    const xcb_screen_t* screen = nullptr;
    xcb_damage_damage_t damage = 0;
    std::uint8_t damageEvent = 0;
    xcb_shm_seg_t segment = 0;
    std::uint8_t* pixels = nullptr;
    int wake = -1; ///< readable when the thread is to end

    explicit Connection(const std::string& display)
        : xcb(::xcb_connect(display.c_str(), nullptr))
        , wake(::eventfd(0, EFD_CLOEXEC))
    {
        if (::xcb_connection_has_error(xcb) == 0)
            screen = ::xcb_setup_roots_iterator(::xcb_get_setup(xcb)).data;
    }

    ~Connection()
    {
        ::xcb_disconnect(xcb);
        if (pixels != nullptr)
            ::shmdt(pixels);
        ::close(wake);
    }

    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    std::size_t size() const { return bytesPerPixel * screen->width_in_pixels * screen->height_in_pixels; }

    bool watchDamage()
    {
        const auto* extension = ::xcb_get_extension_data(xcb, &xcb_damage_id);
        if (extension == nullptr || extension->present == 0)
            return false;
        owned(::xcb_damage_query_version_reply(xcb, ::xcb_damage_query_version(xcb, 1, 1), nullptr));
        damageEvent = extension->first_event;
        damage = ::xcb_generate_id(xcb);
        ::xcb_damage_create(xcb, damage, screen->root, XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
        return true;
    }

    /** Without it the pictures go over the connection. */
    void shareMemory()
    {
        const auto* extension = ::xcb_get_extension_data(xcb, &xcb_shm_id);
        if (extension == nullptr || extension->present == 0)
            return;
        constexpr int onlyForOwner = 0600;
        const auto memory = ::shmget(IPC_PRIVATE, size(), IPC_CREAT | onlyForOwner);
        if (memory < 0)
            return;
        auto* address = ::shmat(memory, nullptr, 0);
        segment = ::xcb_generate_id(xcb);
        const auto error = owned(
            ::xcb_request_check(xcb, ::xcb_shm_attach_checked(xcb, segment, static_cast<std::uint32_t>(memory), 0)));
        ::shmctl(memory, IPC_RMID, nullptr);        // it goes with the last who has it
        if (address == reinterpret_cast<void*>(-1)) // NOLINT: how the call says that it failed
            return;
        if (error == nullptr)
            pixels = static_cast<std::uint8_t*>(address);
        else
            ::shmdt(address);
    }

    /** An invalid image when there is none to be had. */
    juce::Image read() const
    {
        constexpr std::uint32_t allPlanes = ~0u;
        const auto width = screen->width_in_pixels, height = screen->height_in_pixels;
        if (pixels != nullptr)
        {
            const auto request = ::xcb_shm_get_image(xcb, screen->root, 0, 0, width, height, allPlanes,
                                                     XCB_IMAGE_FORMAT_Z_PIXMAP, segment, 0);
            const auto reply = owned(::xcb_shm_get_image_reply(xcb, request, nullptr));
            return reply != nullptr ? imageOf(pixels) : juce::Image();
        }
        const auto request =
            ::xcb_get_image(xcb, XCB_IMAGE_FORMAT_Z_PIXMAP, screen->root, 0, 0, width, height, allPlanes);
        const auto reply = owned(::xcb_get_image_reply(xcb, request, nullptr));
        const bool isWhole =
            reply != nullptr && static_cast<std::size_t>(::xcb_get_image_data_length(reply.get())) == size();
        return isWhole ? imageOf(::xcb_get_image_data(reply.get())) : juce::Image();
    }

    /** Blue, green, red and a byte for nothing, in both; only that the byte is to say that nothing shines through. */
    juce::Image imageOf(const std::uint8_t* source) const
    {
        constexpr std::uint32_t opaque = 0xff000000u;
        juce::Image image(juce::Image::ARGB, screen->width_in_pixels, screen->height_in_pixels, false,
                          juce::SoftwareImageType());
        const juce::Image::BitmapData target(image, juce::Image::BitmapData::writeOnly);
        for (int y = 0; y < image.getHeight(); ++y)
        {
            auto* line = target.getLinePointer(y);
            for (int x = 0; x < image.getWidth(); ++x, source += bytesPerPixel, line += bytesPerPixel)
            {
                std::uint32_t pixel = 0;
                std::memcpy(&pixel, source, bytesPerPixel);
                pixel |= opaque;
                std::memcpy(line, &pixel, bytesPerPixel);
            }
        }
        return image;
    }

    /** Until something has been drawn. False when the thread is to end or the display has gone. */
    bool waitForDamage() const
    {
        for (bool isDamaged = false; !isDamaged;)
        {
            ::xcb_flush(xcb);
            for (auto event = owned(::xcb_poll_for_event(xcb)); event != nullptr;
                 event = owned(::xcb_poll_for_event(xcb)))
                isDamaged = isDamaged || (event->response_type & 0x7f) == damageEvent + XCB_DAMAGE_NOTIFY;
            if (isDamaged)
                break;
            std::array<pollfd, 2> sources { pollfd { ::xcb_get_file_descriptor(xcb), POLLIN, 0 },
                                            pollfd { wake, POLLIN, 0 } };
            if (::poll(sources.data(), sources.size(), -1) < 0 || sources[1].revents != 0 ||
                ::xcb_connection_has_error(xcb) != 0)
                return false;
        }
        return true;
    }

    /** False when the thread is to end meanwhile. */
    bool rest() const
    {
        pollfd source { wake, POLLIN, 0 };
        return ::poll(&source, 1, static_cast<int>(leastInterval.count())) == 0;
    }
};

UnitScreen::UnitScreen(const std::string& display, std::function<void()> changedCall)
    : changed(std::move(changedCall))
{
    constexpr int colourDepth = 24;
    if (display.empty())
        return;
    connection = std::make_unique<Connection>(display);
    if (connection->screen == nullptr || connection->screen->root_depth != colourDepth || !connection->watchDamage())
        return;
    connection->shareMemory();
    thread = std::jthread([this](const std::stop_token& stop) { follow(stop); });
}

UnitScreen::~UnitScreen()
{
    if (!thread.joinable())
        return;
    thread.request_stop();
    ::eventfd_write(connection->wake, 1);
}

juce::Image UnitScreen::picture() const
{
    const std::scoped_lock guard(lock);
    return newest;
}

void UnitScreen::keep(juce::Image image)
{
    {
        const std::scoped_lock guard(lock);
        newest = std::move(image);
    }
    changed();
}

void UnitScreen::follow(const std::stop_token& stop)
{
    do
    {
        // What is drawn from here on is news again.
        ::xcb_damage_subtract(connection->xcb, connection->damage, XCB_NONE, XCB_NONE);
        auto image = connection->read();
        if (image.isNull())
            break;
        keep(std::move(image));
    } while (connection->rest() && connection->waitForDamage() && !stop.stop_requested());
    keep({});
}

} // namespace BenchPanel
