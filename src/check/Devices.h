#pragma once

#include "check/Row.h"

/** Rows of the devices: each is opened, asked what changes nothing, and closed. One thread at a time; up to a few seconds. */
namespace Check
{

Rows link();
Rows wiredRemote();
Rows dsp();
Rows videoDecoder();
Rows lines();

} // namespace Check
