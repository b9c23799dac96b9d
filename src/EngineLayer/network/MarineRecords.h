#pragma once

#include "platform/marine/PGNPacket.h"

#include <juce_core/juce_core.h>

/** The records that the unit sends on the boat's network, and the checks of commands to it. Pure. */
namespace EngineLayer
{

/** The settings that a zone's configuration shows, as they are stored. */
struct ZoneSettings
{
    int fader = 0;          ///< 0 (rear) to 12 (front), 6 is the centre
    int balance = 0;        ///< 0 (left) to 12 (right), 6 is the centre
    int subwooferLevel = 0; ///< 0..12
    int treble = 0;         ///< 0..12, 6 is flat
    int middle = 0;
    int bass = 0;
    int preset = 0;   ///< 0..4
    int highPass = 0; ///< 0..3
};

/** The number that means no zone: its configuration is all 0. */
inline constexpr int noZone = 3;

void writeZoneConfiguration(Platform::Parcel& parcel, int zone, const ZoneSettings& settings);
/** `name` is cut between two characters so that the parcel fits a frame. */
void writeSupportedZones(Platform::Parcel& parcel, int firstValue, const juce::String& zone2Name);
/** The answer to an ISO request, whose zones have another head. */
void writeZoneNames(Platform::Parcel& parcel, const juce::String& zone2Name);
/** `volume` in steps, 0..50. */
void writeZoneVolume(Platform::Parcel& parcel, int zone, int volume, bool mute);
/** The answer to a request for the volume of one zone. */
void writeRequestedZoneVolume(Platform::Parcel& parcel, int zone, int volume);
/** Everything but the source is "not known". `source` is a code of the network. */
void writeLibraryFile(Platform::Parcel& parcel, int source);
void writeLibraryGroup(Platform::Parcel& parcel, int source);

/** The network's code of the page whose source plays; 0xFF for one without a code. */
int getScrFromWinceType(int page);

/** Fields of a zone's configuration, as in messages 130581 and 130586. */
enum ZoneField : int {
    zoneField = 1,
    faderField = 3,
    balanceField = 4,
    subwooferField = 5,
    trebleField = 6,
    middleField = 7,
    bassField = 8,
    lowPassField = 12
};

/** A field's value with its sign. */
int zoneFieldValue(const Platform::FieldValue& field);
/** Gives the first field that is refused its status. True when none is. */
bool checkZoneParameters(Platform::PGNPacket& packet);

/** Fields of a command for the volume, message 130582. */
enum VolumeField : int { volumeZoneField = 1, volumeValueField = 2, volumeStepField = 3, volumeMuteField = 4 };
bool checkZoneVolume(Platform::PGNPacket& packet);

/** The system's version as the network gets it: without its name, with its date. */
juce::String networkVersionOf(const juce::String& osVersion);

} // namespace EngineLayer
