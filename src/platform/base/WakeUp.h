#pragma once

#include "platform/base/Descriptor.h"

#include <sys/eventfd.h>

namespace Platform
{

/** A flag that a `poll` can wait for: readable from `set` until `clear`. Any thread. */
class WakeUp
{
public:
    int getDescriptor() const { return event.get(); }

    void set() { eventfd_write(event.get(), 1); }
    void clear()
    {
        eventfd_t count = 0;
        eventfd_read(event.get(), &count);
    }

private:
    Descriptor event { eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK) };
};

} // namespace Platform
