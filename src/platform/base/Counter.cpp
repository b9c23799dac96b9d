#include "platform/base/Counter.h"

#include <map>
#include <mutex>
#include <string_view>

namespace Platform
{

namespace
{

/** Never destroyed: static objects count until the end. */
struct Counts
{
    struct Count
    {
        const char* meaning;
        std::atomic<std::uint64_t> value { 0 };
    };

    std::mutex lock;
    std::map<std::string_view, Count> byName; // its elements stay where they are

    static Counts& get()
    {
        static auto& only = *new Counts;
        return only;
    }

    std::atomic<std::uint64_t>& find(const char* name, const char* meaning)
    {
        const std::lock_guard guard(lock);
        auto& count = byName[name];
        count.meaning = meaning;
        return count.value;
    }
};

} // namespace

Counter::Counter(const char* name, const char* meaning)
    : shared(Counts::get().find(name, meaning))
{
}

std::vector<Counter::Reading> Counter::all()
{
    auto& counts = Counts::get();
    const std::lock_guard guard(counts.lock);
    std::vector<Reading> readings;
    for (const auto& [name, count] : counts.byName)
        readings.push_back({ name.data(), count.meaning, count.value });
    return readings;
}

} // namespace Platform
