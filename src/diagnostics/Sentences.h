#pragma once

#include "EngineLayer/schedule/RequestLog.h"

#include <string>

/** Decisions of the engine as sentences for a person. Any thread. */
namespace Diagnostics
{

/** "mbFM plays in place of mbAM (play level 21 over 20)." */
std::string sentenceOf(const EngineLayer::Verdict& verdict);
/** Why the request stands where it stands. */
std::string becauseOf(const EngineLayer::RequestRecord& request);
/** "request 12 (mbFM ToRun, by KeyManager, 3 s ago)" */
std::string nameOf(const EngineLayer::RequestRecord& request);

/** Whether the rule decides about the screen. */
bool isOfScreen(EngineLayer::Verdict::Rule rule);

} // namespace Diagnostics
