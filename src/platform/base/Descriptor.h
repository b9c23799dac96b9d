#pragma once

#include <unistd.h>
#include <utility>

namespace Platform
{

/** Owner of a file descriptor; -1 is none. */
class Descriptor
{
public:
    Descriptor() = default;
    explicit Descriptor(int owned)
        : descriptor(owned)
    {
    }
    Descriptor(Descriptor&& other) noexcept
        : descriptor(std::exchange(other.descriptor, -1))
    {
    }
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        reset(std::exchange(other.descriptor, -1));
        return *this;
    }
    ~Descriptor() { reset(); }

    int get() const { return descriptor; }
    explicit operator bool() const { return descriptor >= 0; }

    void reset(int owned = -1)
    {
        if (descriptor >= 0)
            ::close(descriptor);
        descriptor = owned;
    }

private:
    int descriptor = -1;
};

} // namespace Platform
