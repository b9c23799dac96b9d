#pragma once

#include "platform/base/Descriptor.h"

#include <juce_core/juce_core.h>
#include <string>
#include <vector>

namespace Platform
{

/** The programs that the service manager starts for us, each as a service of its own, through `headunit-launch`. */
struct LaunchService
{
    struct Started
    {
        int pid = 0;
        Descriptor pidfd {};
        std::string error {}; ///< why it does not run; empty on success
    };
    /** As the user, empty = as the launcher has it. Waits at most three times as long as `LaunchRequest::patience`, once for the service
    manager, for the program, and for the end of what failed. */
    static Started start(const juce::String& socket, const juce::String& user, const juce::String& path,
                         const juce::StringArray& arguments);
    /** Ends a program of `launch.user`, which this process may have no right to. Empty on success, else why not. */
    static std::string end(int pidfd);

    /**
        What programs find in their environment, "NAME=value": that of this process without what the service manager has
        told this one, and the bus of the configuration.
    */
    static std::vector<std::string> environment();
};

} // namespace Platform
