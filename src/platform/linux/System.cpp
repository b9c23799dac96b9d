#include "platform/System.h"

#include <pthread.h>
#include <sched.h>

namespace Platform
{

bool requestRealtimePriority()
{
    sched_param parameters {};
    parameters.sched_priority = sched_get_priority_min(SCHED_RR);
    return pthread_setschedparam(pthread_self(), SCHED_RR, &parameters) == 0;
}

} // namespace Platform
