#pragma once

#include "bench/simulation/Allocations.h"
#include "doubles/IpcDouble.h"
#include "kernel/TaskGroup.h"

#include <functional>
#include <span>
#include <string>
#include <vector>

namespace Simulation
{

/** Those who are told of one kind of thing. They are added before the first step. */
template <typename... What>
class Listeners
{
public:
    void add(std::function<void(What...)> listener) { all.push_back(std::move(listener)); }
    void tell(What... what) const
    {
        const BenchPart part;
        for (const auto& listener : all)
            listener(what...);
    }

private:
    std::vector<std::function<void(What...)>> all;
};

/** Where a promise can look on while things happen, in their order. */
struct Lookout
{
    /** A component is about to handle it. */
    Listeners<Kernel::SystemTask&, const Kernel::SystemMessage&> messages;
    /** The microcontroller's link: true for what the engine writes, false for what reaches it. */
    Listeners<bool, std::span<const std::uint8_t>> link;
    /** The engine's channel has taken it, for a program or all of them. */
    Listeners<const Platform::IpcDouble::Posted&> posted;
    /** A program's message, by its type, reaches the engine. */
    Listeners<int, const Platform::IpcDouble::Posted&> spoken;
    /** A line of the log: the part that it comes from, and the text. */
    Listeners<const std::string&, const std::string&> lines;

    /** Steps in front of every component. When they are built, before the engine starts. */
    void watchComponents();
};

/** All of the engine; none before it is built. */
std::vector<Kernel::TaskGroup*> taskGroups();

} // namespace Simulation
