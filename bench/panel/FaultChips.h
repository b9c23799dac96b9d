#pragma once

#include "bench/console/ActiveFaults.h"
#include "bench/panel/LineButton.h"

namespace BenchPanel
{

/** Each fault that holds, as a chip with an x that takes it away. Message thread. */
class FaultChips : public juce::Component
{
public:
    explicit FaultChips(Desk& deskToUse);

    void show(const std::vector<Bench::ActiveFault>& faultsToShow);

private:
    Desk& desk;
    std::vector<Bench::ActiveFault> faults;
    class Chip;
    std::vector<std::unique_ptr<LineButton>> chips;

    void resized() override;
};

} // namespace BenchPanel
