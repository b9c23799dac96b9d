#include "EngineLayer/devices/UnitOutputs.h"

#include "kernel/Singleton.h"
#include "platform/base/Time.h"
#include "platform/devices/UnitLines.h"

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
    Platform::drive(Platform::output1Line, high);
    Platform::drive(Platform::output2Line, high);
}

} // namespace

void postDeviceJob(DeviceJob what, Kernel::DeviceWorker::Job job)
{
    UnitDevices::getInstance()->worker.post(static_cast<int>(what), std::move(job));
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
                      Platform::sleepFor(std::chrono::milliseconds(offMs));
                      driveBoth(true);
                  });
}

} // namespace EngineLayer
