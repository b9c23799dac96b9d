#pragma once

#include "check/Row.h"

/** What `headunit-engine --check` does. */
namespace Check
{

/** Each device is waited for no longer than some seconds. Where an engine of this unit runs, its own are left alone. */
std::vector<Group> lookAtUnit();

/** The table as text, with colours where it is for a terminal. */
std::string tableOf(const std::vector<Group>& groups, bool isColoured);

/** Looks at the unit of the configuration that is loaded, and prints the table. The exit status of the process. */
int run(const std::string& configurationFile);

} // namespace Check
