#include "factory/SystemFactory.h"

#include "EngineApi/HostLink.h"
#include "kernel/SystemEngine.h"
#include "support/Eventually.h"
#include "support/McuLink.h"

#include <atomic>
#include <thread>

// The microcontroller talks before anybody has asked it, as soon as the port is open and while the rest of the engine
// is still being built. Every frame waits for the start and is acknowledged.
TEST(SystemFactory, KnowsEveryRouteBeforeThePortOpens)
{
    constexpr int frames = 200;
    juce::DeletedAtShutdown::deleteAll();
    const McuLink mcu;
    std::atomic<bool> over { false };
    std::thread talker(
        [&over]
        {
            using Platform::doubles::SerialPortDouble;
            for (int sequence = 1; sequence <= frames && !over; std::this_thread::yield())
            {
                const auto bytes = McuLink::bytesOf({ sequence, EngineApi::EVENT_DEVICE_STATUS, {} });
                if (SerialPortDouble::receive(McuLink::portName(), bytes.data(), static_cast<int>(bytes.size())))
                    ++sequence;
            }
        });
    Factory::SystemFactory::getInstance()->build();
    auto* engine = Kernel::SystemEngine::getInstance();
    engine->start();

    std::vector<int> acknowledged;
    eventually(
        [&acknowledged]
        {
            for (const auto& frame : McuLink::takeWritten())
                if (frame.command == EngineApi::EVENT_UNKNOWN)
                    acknowledged.push_back(frame.sequence);
            return acknowledged.size() == frames;
        });
    over = true;
    talker.join();
    std::vector<int> all(frames);
    std::iota(all.begin(), all.end(), 1);
    EXPECT_EQ(acknowledged, all);

    engine->stop();
    engine->release();
    juce::DeletedAtShutdown::deleteAll();
}
