#include "EngineLayer/network/SoftwareUpdate.h"

#include "platform/base/Logger.h"
#include "platform/base/Process.h"
#include "platform/config/UpdateProgram.h"
#include "platform/marine/PGNPacket.h"
#include "platform/record/Recorder.h"

#include <algorithm>
#include <array>

namespace EngineLayer
{

namespace
{

constexpr Platform::Log logger { "EngineLayer/NavicoManager", "NavicoManager" };

constexpr const char* automatically = "-auto";

constexpr int any = -1;
constexpr std::size_t selectorByte = 2; ///< passed on, whatever it is

constexpr std::array singleFrame { 0xC0, 0x9A, any, 0x00, 0xFF, 0xFF, 0xFF, 0xFF };
constexpr std::array fastPacket { 0x41, 0x9F, any, 0xFF, 0xFF, 0x31, 0x7D, 0x00, 0xFF, 0xFF, 0xFF, 0xFF };

template <std::size_t size>
bool begins(const std::vector<std::uint8_t>& content, const std::array<int, size>& pattern)
{
    return content.size() >= size &&
           std::equal(pattern.begin(), pattern.end(), content.begin(),
                      [](int wanted, std::uint8_t byte) { return wanted == any || wanted == byte; });
}

} // namespace

std::optional<juce::String> updateArgumentsOf(std::int32_t pgn, int address, int transfer,
                                              const std::vector<std::uint8_t>& content)
{
    const bool wanted = (pgn == Platform::pgnProprietarySingleFrame && begins(content, singleFrame)) ||
                        (pgn == Platform::pgnProprietaryFastPacket && begins(content, fastPacket));
    if (!wanted)
        return {};
    return juce::String(automatically) + " -a " + juce::String(address) + " -t " + juce::String(transfer) + " -s " +
           juce::String(content[selectorByte]) + " -jl";
}

juce::String updateArguments()
{
    return automatically;
}

void writeUpdateReply(Platform::Parcel& parcel, bool started)
{
    constexpr int updateReply = 0x801E;
    parcel.writeShort(updateReply);
    parcel.writeByte(started ? 1 : 0);
    parcel.writeString(started ? "Start Updating" : "Update Not Found");
    parcel.writeByte(0);
}

bool startUpdateProgram(const juce::String& arguments)
{
    for (const auto& program : Platform::updateProgramPaths())
    {
        const auto isThere = [&] { return juce::File(program).existsAsFile(); };
        if (!Platform::recorded(Platform::Step::updateIsThere, isThere, program))
            continue;
        logger().info("update: " + program + " " + arguments);
        const auto words = juce::StringArray::fromTokens(arguments, " ", "");
        if (Platform::createProcess(program, words, Platform::ProgramKind::update) != nullptr)
            return true;
    }
    return false;
}

} // namespace EngineLayer
