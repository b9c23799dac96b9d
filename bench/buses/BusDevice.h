#pragma once

#include "bench/mcu/McuFrame.h"
#include "bench/unit/Device.h"

namespace Bench
{

/** A device behind a bus that the unit's drivers open: it answers their requests, one after the other. */
class BusDevice : public Device
{
public:
    /** Both must outlive it. */
    BusDevice(Journal& journalToUse, PacketLine& lineToUse);

    /** Each request takes so much longer; 0 ends it at once. */
    void slowBy(std::chrono::milliseconds delayToUse) { delay = delayToUse; }
    std::chrono::milliseconds slowedBy() const { return delay; }

    std::optional<Clock::time_point> due() const override;

protected:
    using Packet = PacketLine::Packet;

    Journal& journal;
    PacketLine& line;
    std::chrono::milliseconds delay { 0 };

    /** Empty drops the connection. */
    virtual std::optional<Bytes> answer(int connection, Packet request) = 0;
    virtual void closed(int) {}
    virtual bool canBeSlow(Packet) const { return true; }
    void forgetRequests() { waiting.clear(); }

private:
    struct Request
    {
        int connection;
        std::optional<Bytes> bytes; ///< empty when the connection has closed
    };
    std::deque<Request> waiting;
    Clock::time_point begun; ///< with the first of them

    void take(Request request);
    void doDue() override;
};

} // namespace Bench
