#pragma once

#include <atomic>

namespace EngineApi
{

/**
    The one implementation of an interface that a lower layer owns and a higher layer implements; null while the unit
    has no such part. `set` on the message thread, `get` on any.
*/
template <typename Interface>
class Provided
{
public:
    static Interface* get() { return provider.load(std::memory_order_acquire); }
    static void set(Interface* implementation) { provider.store(implementation, std::memory_order_release); }

private:
    static inline std::atomic<Interface*> provider { nullptr };
};

} // namespace EngineApi
