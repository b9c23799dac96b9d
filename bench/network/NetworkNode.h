#pragma once

#include "bench/mcu/Mcu.h"
#include "bench/network/NetworkMessage.h"

namespace Bench
{

/**
    The microcontroller as a node of the boat's network. It owns the address: claims it when it starts and when it is
    asked, and says what it is and which messages it knows (ISO requests for 60928, 126996 and 126464). What it is asked
    travels to the unit all the same, which has no answer to these. It keeps its address, whatever others claim.
*/
class NetworkNode
{
public:
    /** It must outlive this. */
    explicit NetworkNode(Mcu& mcu);
    NetworkNode(const NetworkNode&) = delete;
    NetworkNode& operator=(const NetworkNode&) = delete;

    /** Each whole message on the network that the unit or this node sends, or the unit gets; in order. */
    using Listener = std::function<void(const NetworkMessage& message)>;
    /** Those who listen must outlive the traffic. */
    void addListener(Listener listener) { listeners.push_back(std::move(listener)); }

private:
    std::vector<Listener> listeners;

    void hear(const Mcu::Frame& frame);
    void answer(const NetworkMessage& request);
    void claimAddress();
    void listMessages(int asker);
    void say(int pgn, int destination, Bytes data);
    void tell(const NetworkMessage& message);
};

} // namespace Bench
