#include "bench/simulation/Shrink.h"

#include <algorithm>

namespace Simulation
{

namespace
{

/** Another plan is another order of everything, so that each is tried under several. */
constexpr int seedsTried = 3;
/** Then what has been found is short enough. */
constexpr std::chrono::seconds patience { 90 };

class Shrinking
{
public:
    Shrinking(const World& worldToUse, std::string promiseToBreak, Short first)
        : world(worldToUse)
        , promise(std::move(promiseToBreak))
        , best(std::move(first))
    {
    }

    bool tryOut(const Plan& plan)
    {
        for (int i = 0; i < seedsTried && !isOver(); ++i)
        {
            const auto seed = best.seed + static_cast<std::uint64_t>(i);
            auto result = run(world, seed, plan, {});
            if (result.promise() != promise)
                continue;
            // What comes after the break is not needed.
            best = { result.plan, seed, result };
            return true;
        }
        return false;
    }

    /** Mostly what came before the last rest, or the last few, has nothing to do with it. */
    bool takeTheEnd()
    {
        const auto whole = best.plan;
        std::size_t begin = whole.size(), rests = 0;
        for (std::size_t wanted = 2; begin > 0 && !isOver(); wanted *= 2)
        {
            for (; begin > 0 && rests < wanted; --begin)
                rests += whole[begin - 1].line == rest ? 1 : 0;
            if (tryOut(Plan(whole.begin() + static_cast<std::ptrdiff_t>(begin), whole.end())))
                return true;
        }
        return false;
    }

    /** Leaves out piece after piece, which become smaller. */
    void leaveOut()
    {
        for (auto size = std::max<std::size_t>(1, best.plan.size() / 2);; size = std::max<std::size_t>(1, size / 2))
        {
            bool shorter = false;
            for (std::size_t at = 0; at < best.plan.size() && !isOver();)
            {
                auto plan = best.plan;
                const auto begin = plan.begin() + static_cast<std::ptrdiff_t>(at);
                plan.erase(begin, begin + static_cast<std::ptrdiff_t>(std::min(size, plan.size() - at)));
                if (tryOut(plan))
                    shorter = true;
                else
                    at += size;
            }
            if (isOver() || (size == 1 && !shorter))
                return;
        }
    }

    void simplify()
    {
        for (std::size_t at = 0; at < best.plan.size(); ++at)
        {
            auto plan = best.plan;
            if (plan[at].line == rest || (plan[at].pause.count() == 0 && plan[at].steps == 0))
                continue;
            plan[at].pause = {};
            plan[at].steps = 0;
            tryOut(plan);
        }
    }

    Short result() const { return best; }

private:
    const World& world;
    const std::string promise;
    Short best;
    const std::chrono::steady_clock::time_point end = std::chrono::steady_clock::now() + patience;

    bool isOver() const { return std::chrono::steady_clock::now() > end; }
};

} // namespace

std::optional<Short> shrink(const World& world, std::uint64_t seed, const Result& broken)
{
    Shrinking shrinking(world, broken.promise(), { broken.plan, seed, broken });
    if (!shrinking.takeTheEnd())
        return {};
    shrinking.leaveOut();
    shrinking.simplify();
    return shrinking.result();
}

} // namespace Simulation
