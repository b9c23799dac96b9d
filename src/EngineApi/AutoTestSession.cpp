#include "EngineApi/AutoTestSession.h"

#include "EngineApi/Pages.h"
#include "EngineApi/Provided.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

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
