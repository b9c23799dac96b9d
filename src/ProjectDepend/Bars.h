#pragma once

/** The on-screen bars of this unit. Message thread. */
namespace Bar
{

/** Makes the bars and offers them to the engine. Before the managers are built. */
void createBars();
/** Removes the bars. After the engine's threads have stopped. */
void removeBars();

} // namespace Bar
