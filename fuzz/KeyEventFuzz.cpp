#include "EngineApi/HostLink.h"
#include "EngineApi/Provided.h"
#include "EngineLayer/keys/KeyManager.h"
#include "doubles/SystemDouble.h"
#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"
#include "lowlayer/BytePool.h"
#include "platform/settings/SetupIndex.h"
#include "support/FakeAudio.h"
#include "support/FakeDevices.h"
#include "support/ScratchUnit.h"

#include <cstdlib>
#include <numeric>

using namespace EngineApi;
using namespace EngineLayer;

namespace
{

void require(bool condition)
{
    if (!condition)
        std::abort();
}

/** The key manager alone in its group, among devices that only write down. */
struct Unit
{
    Unit()
    {
        ScratchUnit::emptySettings("24 = 52\n40 = \"a\"\n1031 = \"version\"\n1042 = \"\"\n");
        Provided<FavoriteBar>::set(&bar);
        Provided<Dsp::ChipManager>::set(&audio);
        Provided<AutoTestSession>::set(&session);
        auto* engine = Kernel::SystemEngine::getInstance();
        engine->createGroup(groupName, 5);
        keys.assignId(Kernel::keyManagerId);
        engine->registerComponent(groupName, &keys);
        group = engine->findGroup(groupName);
    }

    void hear(juce::int32 id, juce::int32 arg1, juce::int32 arg2, const std::vector<std::uint8_t>& bytes)
    {
        LowLayer::BytePool::Ptr data = new LowLayer::BytePool(static_cast<int>(bytes.size()), nullptr);
        data->assign(bytes.data(), static_cast<int>(bytes.size()));
        Kernel::postSystemMessage(Kernel::keyManagerId, id, arg1, arg2, std::move(data));
        while (group->hasMessages())
            group->runPass();
    }

    static constexpr const char* groupName = "Fuzz";
    const ScratchUnit folders;
    const juce::ScopedJuceInitialiser_GUI messageManager;
    FakeFavoriteBar bar;
    FakeAudio audio;
    FakeAutoTest session;
    KeyManager& keys = *KeyManager::getInstance();
    Kernel::TaskGroup* group = nullptr;
};

/** What the test equipment would send around these parameters. */
std::vector<std::uint8_t> frameOf(const std::vector<std::uint8_t>& parameters)
{
    std::vector<std::uint8_t> frame { 0xff, 0xaa, 0, static_cast<std::uint8_t>(parameters.size() + 5) };
    frame.insert(frame.end(), parameters.begin(), parameters.end());
    frame.push_back(static_cast<std::uint8_t>(std::accumulate(frame.begin(), frame.end(), 0u)));
    return frame;
}

} // namespace

/** Records of a kind, a length and so many bytes: keys, commands of the test equipment, answers about the device id. */
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static Unit unit;
    for (std::size_t at = 0; at + 2 <= size;)
    {
        const int kind = data[at];
        const auto length = std::min<std::size_t>(data[at + 1] % 98, size - at - 2);
        const std::vector<std::uint8_t> bytes(data + at + 2, data + at + 2 + length);
        at += 2 + length;
        Platform::doubles::SystemDouble::advanceTicks(static_cast<juce::uint32>(kind));
        unit.bar.shown = (kind & 0x10) != 0;
        unit.session.messages.clear();
        unit.bar.messages.clear();
        unit.audio.calls.clear();
        switch (kind % 4)
        {
        case 0:
            unit.hear(Kernel::MSG_HOST_EVENT, EVENT_KEY, static_cast<int>(length), bytes);
            break;
        case 1:
            unit.hear(Kernel::MSG_HOST_EVENT, EVENT_AUTOTEST_INFO, static_cast<int>(length), frameOf(bytes));
            break;
        case 2:
            unit.hear(Kernel::MSG_HOST_EVENT, EVENT_GET_DEVICE_ID, static_cast<int>(length), bytes);
            break;
        default:
            unit.hear(Kernel::MSG_WIRED_REMOTE_KEY, originWiredRemote, bytes.empty() ? 0 : 0x10000 + bytes[0], {});
            break;
        }
        require(unit.session.messages.size() <= 2);
        for (const auto& message : unit.session.messages)
            require(message.getSize() >= 1 && message.getSize() <= 97);
        for (const auto& [id, favourite, camera] : unit.bar.messages)
            require(id != Kernel::MSG_FAVOURITES_SELECT || (favourite >= 1 && favourite <= Platform::favouriteCount));
    }
    return 0;
}
