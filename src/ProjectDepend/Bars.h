#pragma once

/** The on-screen bars of this unit. Message thread. */
namespace Bar
{

/** Makes the bars and offers them to the engine; before its managers are built. */
void createBars();
/** Takes them off the screen and away; after the engine's threads have stopped. */
void removeBars();

} // namespace Bar
