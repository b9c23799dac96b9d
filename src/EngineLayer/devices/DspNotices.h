#pragma once

namespace EngineLayer
{

/** A new volume goes to the network, and when it is to be shown to the volume bar and the wired remote. Any thread. */
void announceVolume(int zone, int volume, bool show);

/** The mute goes to network, volume bar and wired remote. Any thread. */
void announceMute(bool mute);

} // namespace EngineLayer
