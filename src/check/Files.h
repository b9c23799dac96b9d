#pragma once

#include "check/Row.h"

/** Rows of what lies in files. Any thread; a file system that hangs holds the caller up. */
namespace Check
{

Rows folders();
Rows resources();
Rows dspImages();
Rows programs();
Rows updateKeys();

} // namespace Check
