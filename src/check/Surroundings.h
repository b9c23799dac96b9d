#pragma once

#include "check/Row.h"

/** Rows of what the system gives the engine. Each may wait, for the bus two seconds. Any thread. */
namespace Check
{

Rows bus();
Rows sockets();
Rows display();
Rows logLibrary();
Rows soundCard();
/** On a thread of its own: it asks for the priority. */
Rows priority();

} // namespace Check
