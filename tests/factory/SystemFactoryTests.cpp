#include "factory/SystemFactory.h"

#include "EngineApi/HostLink.h"
#include "kernel/SystemEngine.h"
#include "support/Eventually.h"
#include "support/McuLink.h"

#include <thread>

// The microcontroller talks before anybody has asked it: as soon as the port is open, and on while the rest of the
// engine is still being built. Every frame waits for the start and is acknowledged.
TEST(SystemFactory, KnowsEveryRouteBeforeThePortOpens)
{
    constexpr int frames = 200;
    juce::DeletedAtShutdown::deleteAll();
    const McuLink mcu;
    const auto talk = [](int sequence) { McuLink::send({ sequence, EngineApi::EVENT_DEVICE_STATUS, {} }); };
    std::thread talker;
    Platform::doubles::SerialPortDouble::onOpen(McuLink::portName(),
                                                [&]
                                                {
                                                    talk(1);
                                                    talker = std::thread(
                                                        [talk]
                                                        {
                                                            for (int sequence = 2; sequence <= frames; ++sequence)
                                                                talk(sequence);
                                                        });
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
    talker.join();
    Platform::doubles::SerialPortDouble::reset();
    std::vector<int> all(frames);
    std::iota(all.begin(), all.end(), 1);
    EXPECT_EQ(acknowledged, all);

    engine->stop();
    // A loaded machine needs longer than a unit gives its threads.
    ASSERT_TRUE(eventually([engine] { return engine->release(); }));
    juce::DeletedAtShutdown::deleteAll();
}
