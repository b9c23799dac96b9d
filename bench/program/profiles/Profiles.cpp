#include "bench/program/profiles/Profiles.h"

#include "EngineApi/KeyCodes.h"
#include "platform/base/Pubhead.h"
#include "platform/settings/SetupIndex.h"
#include "platform/settings/SetupStore.h"

namespace BenchProgram
{

using namespace Pubhead;

std::unique_ptr<Profile> makeProfile(int appType, Host& host)
{
    struct Entry
    {
        int appType;
        std::unique_ptr<Profile> (*make)(Host&);
    };
    constexpr Entry table[] = { { AppMainMenu, makeMainMenuProfile },
                                { AppRadio, makeRadioProfile },
                                { AppSirius, makeSatelliteProfile },
                                { AppBluetooth, makeBluetoothProfile },
                                { AppiPod, makeiPodProfile },
                                { AppPandora, makePandoraProfile },
                                { AppUSB, makeUSBProfile },
                                { AppAuxIn, makeAuxInProfile },
                                { AppSetup, makeSetupProfile },
                                { AppEQ, makeEqualiserProfile },
                                { AppAntitheft, makeAntitheftProfile },
                                { AppCamera, makeCameraProfile },
                                { AppStandby, makeStandbyProfile } };
    for (const auto& entry : table)
        if (entry.appType == appType)
            return entry.make(host);
    return std::make_unique<Profile>(host);
}

int storedFavourites()
{
    int count = 1;
    for (int favourite = 1; favourite <= Platform::favouriteCount; ++favourite)
        if (Platform::VX_GetSetupValueInt(Platform::favouritePageSetting(favourite)) < NUM_OF_PAGES)
            count = favourite;
    return count;
}

bool Playlist::onKey(int key)
{
    switch (key)
    {
    case EngineApi::KEY_NEXT:
    case EngineApi::KEY_ROTARY_NEXT:
        play(current + 1);
        return true;
    case EngineApi::KEY_PRE:
    case EngineApi::KEY_ROTARY_PRE:
        play(current - 1);
        return true;
    case EngineApi::KEY_PLAYPAUSE:
        paused = !paused;
        return true;
    default:
        return false;
    }
}

void Playlist::play(int piece)
{
    if (pieces.isEmpty())
        return;
    current = (piece % pieces.size() + pieces.size()) % pieces.size();
    paused = false;
}

std::vector<Row> Playlist::rows() const
{
    std::vector<Row> rows;
    for (int i = 0; i < pieces.size(); ++i)
        rows.push_back({ i, pieces[i], i == current ? (paused ? "Paused" : "Playing") : "", i == current });
    return rows;
}

} // namespace BenchProgram
