#pragma once

#include "bench/program/Profile.h"
#include "platform/channel/RemoteMessageIds.h"

namespace BenchProgram
{

/** The profile of a program. */
std::unique_ptr<Profile> makeProfile(int appType, Host& host);

// Of the programs that have one of their own.

std::unique_ptr<Profile> makeMainMenuProfile(Host& host);
std::unique_ptr<Profile> makeRadioProfile(Host& host);
std::unique_ptr<Profile> makeSatelliteProfile(Host& host);
std::unique_ptr<Profile> makeBluetoothProfile(Host& host);
std::unique_ptr<Profile> makeiPodProfile(Host& host);
std::unique_ptr<Profile> makePandoraProfile(Host& host);
std::unique_ptr<Profile> makeUSBProfile(Host& host);
std::unique_ptr<Profile> makeAuxInProfile(Host& host);
std::unique_ptr<Profile> makeSetupProfile(Host& host);
std::unique_ptr<Profile> makeEqualiserProfile(Host& host);
std::unique_ptr<Profile> makeAntitheftProfile(Host& host);
std::unique_ptr<Profile> makeCameraProfile(Host& host);
std::unique_ptr<Profile> makeStandbyProfile(Host& host);

/** How many favourites the unit's bar is to offer: up to the last one that is stored, at least one. */
int storedFavourites();

/** Sub-codes of RMSG_APP_EVENT that a program sends. */
enum AppEvent : int { menuPageChosen = Platform::appEventMenuPage, menuWantsState = 6, menuStandby = 8 };

/** Menu commands by window message, with the values of `panelKey`. */
enum MenuCommand : int { standbyCommand = 10, sourceCommand = 11, panelKey = 12 };
enum PanelKey : int { panelLouder = 0, panelSofter = 1 };

/** What goes along with `menuStandby` and `standbyCommand`. */
enum Standby : int { enterStandby = 0, leaveStandby = 1 };

/** What pieces are played, one after the other, by the keys of the page. */
class Playlist
{
public:
    explicit Playlist(juce::StringArray piecesToPlay)
        : pieces(std::move(piecesToPlay))
    {
    }

    /** True when the key belongs to playing. */
    bool onKey(int key);
    void play(int piece);
    const juce::StringArray& getPieces() const { return pieces; }
    int getCurrent() const { return current; }
    bool isPaused() const { return paused; }
    juce::String title() const { return pieces[current]; }
    std::vector<Row> rows() const;

private:
    juce::StringArray pieces;
    int current = 0;
    bool paused = false;
};

} // namespace BenchProgram
