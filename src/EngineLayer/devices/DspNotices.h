#pragma once

namespace EngineLayer
{

/** Reports a volume to the network and, with `show`, to the volume bar and the wired remote. Any thread. */
void announceVolume(int zone, int volume, bool show);

/** Reports the mute to the network, the volume bar and the wired remote. Any thread. */
void announceMute(bool mute);

} // namespace EngineLayer
