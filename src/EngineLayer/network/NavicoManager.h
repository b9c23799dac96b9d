#pragma once

#include "EngineLayer/network/MarineRecords.h"
#include "kernel/Singleton.h"
#include "kernel/SystemTask.h"
#include "kernel/SystemTimer.h"

#include <span>

namespace EngineLayer
{

/**
    Makes the unit a device of the boat's network: answers requests and commands of displays, reports changes, relays
    media messages to the source programs and starts a software update. It stores no state: each value is read when it
    is sent. Handlers run on the group thread.
*/
class NavicoManager : public Kernel::ComponentTask, public Kernel::Singleton<NavicoManager>, public Kernel::SystemTimer
{
public:
    NavicoManager();

    void handleMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2, const Kernel::Payload& payload) override;
    void onStop() override { stopTimer(quitTimer); }

    static constexpr int quitTimer = 1;
    static constexpr int quitDelayMs = 1000;

private:
    using Bytes = std::span<const std::uint8_t>;

    void handleHostEvent(int command, Bytes bytes);
    void receiveData(Bytes bytes);
    void receivePgn(Bytes bytes);
    void reportVersion(Bytes bytes) const;
    void storeDeviceId(Bytes bytes) const;

    void groupFunction(Platform::PGNPacket& packet, Bytes whole);
    void answerRequest(const Platform::PGNPacket& packet) const;
    void obey(Platform::PGNPacket& packet) const;
    void isoRequest(Platform::Parcel& parcel, Bytes whole) const;

    void reportZones(std::int32_t pgn) const;
    void reportVolumes(bool mute, bool muteIsSilence) const;
    /** True when the update program runs now: the programs are closed and this process ends a second later. */
    bool update(const juce::String& arguments);
};

} // namespace EngineLayer
