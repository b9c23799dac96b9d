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

void reportSourceToAutoTest()
{
    auto* session = Provided<AutoTestSession>::get();
    const auto* found = std::find_if(std::begin(sourceCodes), std::end(sourceCodes),
                                     [page = getNormalSource()](const auto& each) { return each.page == page; });
    if (session == nullptr || found == std::end(sourceCodes))
        return;
    const std::uint8_t report[] = { 0x00, 0x01, found->type, found->number };
    session->addMsgToBuffer(juce::MemoryBlock(report, sizeof report));
}

} // namespace EngineApi
