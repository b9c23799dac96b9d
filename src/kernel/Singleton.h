#pragma once

#include "platform/base/Threads.h"

#include <atomic>
#include <juce_events/juce_events.h>
#include <mutex>
#include <type_traits>

namespace Kernel
{

/**
    A process-wide object, made on first use and deleted by the framework at shutdown. Any thread may ask for it. After
    the deletion the next use makes a new one, which tests rely on.
*/
template <typename T>
class Singleton : public juce::DeletedAtShutdown
{
public:
    static T* getInstance()
    {
        if (auto* made = instance.load(std::memory_order_acquire))
            return made;
        const std::lock_guard guard(lock);
        if (instance.load(std::memory_order_relaxed) == nullptr)
        {
            auto* made = new T();
            // Its own reference: other holders may let go without deleting it.
            if constexpr (std::is_base_of_v<juce::ReferenceCountedObject, T>)
                made->incReferenceCount();
            instance.store(made, std::memory_order_release);
        }
        return instance.load(std::memory_order_relaxed);
    }

    /** Null when it was not made yet, or is deleted again. */
    static T* getExisting() { return instance.load(std::memory_order_acquire); }

protected:
    Singleton() = default;
    ~Singleton() override { instance.store(nullptr, std::memory_order_release); }

private:
    static inline std::atomic<T*> instance { nullptr };
    static inline Platform::Mutex lock;
};

} // namespace Kernel
