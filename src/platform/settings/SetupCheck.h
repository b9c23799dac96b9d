#pragma once

#include <string>

namespace Platform
{

/**
    Whether the settings store in a folder can be read and written without harm. A damaged one can end the process that
    uses it, so a child process tries it out: it reads and rewrites everything, on a copy in memory, which needs no lock
    and leaves the store as it is. True also when there is no store, and when it cannot be tried (logged). Not while the
    store is open in this process.
*/
bool isSetupStoreSound(const std::string& folder);

} // namespace Platform
