#pragma once

#include "dsp/akm/ak7738ACOperator.h"
#include "dsp/akm/ak7738EQOperator.h"
#include "dsp/akm/ak7738Operator.h"
#include "kernel/Singleton.h"

namespace Dsp
{

/** The chip's two operators. */
class ak773ChipManager : public ChipManager, public Kernel::Singleton<ak773ChipManager>
{
public:
    bool init(DSPSettingHelper& helper) override
    {
        audioControl.init(helper);
        equaliser.init(helper, audioControl);
        return true;
    }
    EQService& getEQService() override { return equaliser; }
    ACService& getACService() override { return audioControl; }
    DspStatus getStatus() const override
    {
        auto status = audioControl.getStatus();
        ak7738Operator::getInstance()->addTo(status);
        return status;
    }

private:
    ak7738ACOperator audioControl;
    ak7738EQOperator equaliser;
};

} // namespace Dsp
