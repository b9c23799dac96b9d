#include "EngineLayer/autotest/CATestSessionManager.h"

#include "EngineApi/HostLink.h"
#include "EngineApi/Pages.h"
#include "EngineApi/Provided.h"
#include "platform/base/Counter.h"
#include "platform/base/Logger.h"

#include <algorithm>

namespace EngineLayer
{

namespace
{

constexpr Platform::Log logger { "EngineLayer/ATestSessionManger", "ATestSession" };

Platform::Counter messagesRefused { "autotest.messages-refused", "messages to test equipment that does not keep up" };

} // namespace

CATestSessionManager::CATestSessionManager()
    : Platform::Thread("ATestSession")
{
}

CATestSessionManager::~CATestSessionManager()
{
    stop();
}

void CATestSessionManager::start()
{
    const std::lock_guard guard(lock);
    if (isThreadRunning())
        return;
    readyToSend = true;
    if (!startThread())
        logger().error("the thread does not start");
}

void CATestSessionManager::stop()
{
    signalThreadShouldExit();
    notify();
    if (!Platform::awaitEnd(*this))
        logger().error("the thread does not stop");
}

void CATestSessionManager::addMsgToBuffer(const juce::MemoryBlock& message)
{
    if (message.isEmpty())
        return;
    constexpr auto longest = static_cast<std::size_t>(AutoTestFrame::longestMessage);
    if (message.getSize() > longest)
        logger().error("a message of %d bytes is cut, a frame carries %d", static_cast<int>(message.getSize()),
                       AutoTestFrame::longestMessage);
    const auto* bytes = static_cast<const std::uint8_t*>(message.getData());

    const std::lock_guard guard(lock);
    if (queue.size() >= maxWaitingMessages)
    {
        ++refusedMessages;
        ++messagesRefused;
        if (!std::exchange(queueFull, true))
            logger().error("%d messages wait, what follows is not sent", maxWaitingMessages);
        return;
    }
    queue.emplace_back(bytes, bytes + std::min(message.getSize(), longest));
    notify();
}

void CATestSessionManager::clearBuffer()
{
    const std::lock_guard guard(lock);
    queue.clear();
    queueFull = false;
}

void CATestSessionManager::setPeerState(bool ready, int state)
{
    const std::lock_guard guard(lock);
    readyToSend = ready;
    peerState = state;
    notify();
}

void CATestSessionManager::run()
{
    // Nothing more can be sent until something changes, and every change notifies: also one that comes before the wait.
    while (!threadShouldExit())
    {
        sendNext();
        wait(-1);
    }
}

void CATestSessionManager::sendNext()
{
    const std::lock_guard guard(lock);
    if (!readyToSend)
        return;
    switch (peerState)
    {
    case sendAgain:
        if (!current.empty())
            return sendCurrent();
        [[fallthrough]]; // Nothing has been sent yet: the equipment waits for the first message.
    case acknowledged:
    case nothingSaid:
        if (queue.empty())
            return;
        logger().info("sendMsg3");
        current = AutoTestFrame::build(sequence++, queue.front());
        sendCurrent();
        queue.pop_front();
        queueFull = false;
        logger().info("sendMsgSuccess");
        break;
    default:
        break;
    }
}

void CATestSessionManager::sendCurrent()
{
    EngineApi::sendData(EngineApi::EVENT_AUTOTEST_INFO, current.data(), static_cast<int>(current.size()));
    readyToSend = false;
}

} // namespace EngineLayer

namespace EngineApi
{

namespace
{

/** How the test equipment names the page that plays. */
struct SourceCode
{
    int page;
    std::uint8_t type;
    std::uint8_t number;
};

constexpr SourceCode sourceCodes[] = {
    { Pubhead::mbFM, 0, 0 },           { Pubhead::mbAM, 0, 0 },       { Pubhead::mbWB, 0, 0 },
    { Pubhead::mbUSBAudio, 10, 1 },    { Pubhead::mbSirius, 14, 0 },  { Pubhead::mbAuxin2, 5, 0 },
    { Pubhead::mbiPodPandora, 21, 0 }, { Pubhead::mbBTAudio, 13, 2 },
};

} // namespace

void answerAutoTest(std::span<const std::uint8_t> message)
{
    if (auto* session = Provided<AutoTestSession>::get())
        session->addMsgToBuffer(juce::MemoryBlock(message.data(), message.size()));
}

void reportSourceToAutoTest()
{
    const auto* found = std::find_if(std::begin(sourceCodes), std::end(sourceCodes),
                                     [page = getNormalSource()](const auto& each) { return each.page == page; });
    if (found == std::end(sourceCodes))
        return;
    const std::uint8_t report[] = { 0x00, 0x01, found->type, found->number };
    answerAutoTest(report);
}

} // namespace EngineApi
