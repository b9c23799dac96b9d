#pragma once

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/common_interface_defs.h>
#endif

namespace Simulation
{

/** A stack that can be left and come back to, as the address sanitizer has to be told. Without it nothing is done. */
struct FiberStack
{
    const void* bottom = nullptr;
    std::size_t size = 0;
    void* saved = nullptr; ///< the sanitizer's own, while it is left

    /** Before the switch. A stack that `isOver` is not come back to. */
    void leaveFor(const FiberStack& other, bool isOver = false);
    /** After the switch; the first arrival at another one tells where the first stack is. */
    void arriveFrom(FiberStack& other);
};

#if defined(__SANITIZE_ADDRESS__)

inline void FiberStack::leaveFor(const FiberStack& other, bool isOver)
{
    __sanitizer_start_switch_fiber(isOver ? nullptr : &saved, other.bottom, other.size);
}

inline void FiberStack::arriveFrom(FiberStack& other)
{
    __sanitizer_finish_switch_fiber(saved, &other.bottom, &other.size);
}

#else

inline void FiberStack::leaveFor(const FiberStack&, bool) {}
inline void FiberStack::arriveFrom(FiberStack&) {}

#endif

} // namespace Simulation
