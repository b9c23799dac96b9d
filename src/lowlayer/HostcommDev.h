#pragma once

#include "kernel/Singleton.h"
#include "kernel/SystemTask.h"
#include "lowlayer/BytePool.h"
#include "lowlayer/ClientCallBack.h"
#include "platform/devices/SerialPort.h"

#include <atomic>
#include <memory>

namespace LowLayer
{

/**
    Owns the microcontroller's serial port. Received bytes leave the port's reader thread in pooled buffers of 32 bytes
    and reach the client on the group thread.
*/
class HostcommDev : public Kernel::ComponentTask, public Platform::SerialCallBack, public Kernel::Singleton<HostcommDev>
{
public:
    /** Largest piece that one message carries. */
    static constexpr int pieceLength = 32;
    /** Messages that may wait for the group: seconds of traffic. Bytes that come in beyond that are lost. */
    static constexpr std::size_t maxWaiting = 1024;

    ~HostcommDev() override;

    /** Opens the port, so that it is open before the group threads start. */
    void initialize() override;
    void onStop() override;
    void onRelease() override;
    void handleMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2, const Kernel::Payload& payload) override;

    /** There is one client; it is called on the group thread of the link. */
    void setClient(ClientCallBack* newClient);
    /** True when the port has taken every byte. Blocks until the driver has them. */
    bool write(const void* data, int length);
    /** Closes the port now and opens it again from the group thread; until then writes fail. */
    void reopen();
    void clearClient();

    /** Port reader thread. */
    void onReceive(const void* data, int length) override;

    /** Received bytes that were lost because too many wait. Any thread. */
    int getLostBytes() const { return lostBytes; }

private:
    friend class Kernel::Singleton<HostcommDev>;
    HostcommDev() = default;

    enum PrivateMessage : juce::int32 { msgReceived = 1, msgReopen = 2 };

    void openPort();
    bool hasRoomFor(int length);
    void postPiece(const std::uint8_t* data, int length);

    std::unique_ptr<Platform::SerialPort> port;
    ClientCallBack* client = nullptr;
    std::unique_ptr<BytePoolStore> store;
    std::atomic<int> lostBytes { 0 };
    bool lossLogged = false; ///< until nothing waits; the reader thread's
};

} // namespace LowLayer
