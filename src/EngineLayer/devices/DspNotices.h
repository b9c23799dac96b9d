#pragma once

namespace EngineLayer
{

/** Reports a volume to the network and, with `show`, to the volume bar and the wired remote. Any thread. */
void announceVolume(int zone, int volume, bool show);

/** Reports the mute to the network, the volume bar and the wired remote. Any thread. */
void announceMute(bool mute);

/** The mute has ended without a notice: where it was reported, its end is reported too. Any thread. */
void withdrawMute();

} // namespace EngineLayer
