#include "EngineLayer/devices/UnitOutputs.h"

#include "kernel/Singleton.h"
#include "platform/devices/Lines.h"

#include <utility>

namespace EngineLayer
{

namespace
{

struct UnitDevices : Kernel::Singleton<UnitDevices>
{
    Kernel::DeviceWorker worker { "Devices" };
};

void driveBoth(bool high)
{
    drive(Platform::UnitLine::startOutput1, high);
    drive(Platform::UnitLine::startOutput2, high);
}

} // namespace

void postDeviceJob(DeviceJob what, Kernel::DeviceWorker::Job job)
{
    UnitDevices::getInstance()->worker.post(static_cast<int>(what), std::move(job));
}

void drive(Platform::UnitLine line, bool high)
{
    constexpr int outputFunction = 32;
    Platform::GpioFunc::setPinFunc(static_cast<int>(line), outputFunction);
    Platform::GpioFunc::writePin(static_cast<int>(line), high ? 1 : 0);
}

void driveOutputs(bool on)
{
    postDeviceJob(DeviceJob::outputs, [on] { driveBoth(on); });
}

void pulseOutputs(int offMs)
{
    postDeviceJob(DeviceJob::outputs,
                  [offMs]
                  {
                      driveBoth(false);
                      juce::Thread::sleep(offMs);
                      driveBoth(true);
                  });
}

} // namespace EngineLayer
