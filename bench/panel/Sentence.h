#pragma once

#include "bench/panel/PanelState.h"

namespace BenchPanel
{

/** What the unit is doing, for a person: "FM radio plays, agreed with the microcontroller". */
std::string stateSentence(const PanelState& state);
/** The page's title, "nothing" for none. */
std::string pageTitle(int page);

} // namespace BenchPanel
