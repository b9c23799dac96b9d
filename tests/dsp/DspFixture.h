#pragma once

#include "doubles/LinesDouble.h"
#include "doubles/SpiDouble.h"
#include "dsp/DSPSettingHelperImpl.h"
#include "dsp/akm/BootTable.h"
#include "dsp/akm/ak7738Operator.h"
#include "support/ScratchUnit.h"

#include <gtest/gtest.h>

/** A unit with a DSP that confirms every block, whole images, and settings as they leave the factory. */
class DspFixture : public testing::Test
{
protected:
    using Spi = Platform::doubles::SpiDouble;

    DspFixture()
    {
        juce::DeletedAtShutdown::deleteAll();
        Spi::reset();
        Platform::doubles::LinesDouble::reset();
        ScratchUnit::emptySettings(
            "279 = 6\n280 = 6\n1281 = 6\n1282 = 6\n1283 = 6\n1284 = 13\n276 = 1\n283 = 1\n6 = 3\n");
        for (const auto& image : Dsp::images)
            writeImage(image, image.size, image.firstByte);
    }

    ~DspFixture() override { juce::DeletedAtShutdown::deleteAll(); }

    /** What the chip got, when it has got all of it. */
    static auto takeBlocks()
    {
        Kernel::DeviceWorker::drainAll();
        return Spi::takeBlocks();
    }
    static auto takeOperations()
    {
        Kernel::DeviceWorker::drainAll();
        return Spi::takeOperations();
    }

    static juce::File imageFile(const Dsp::Image& image)
    {
        const juce::File resources(Platform::Configuration::get().resourcePath);
        return resources.getChildFile("dsp").getChildFile(image.file);
    }

    static void writeImage(const Dsp::Image& image, std::size_t size, std::uint8_t firstByte)
    {
        juce::MemoryBlock content(size, true);
        content[0] = static_cast<char>(firstByte);
        imageFile(image).getParentDirectory().createDirectory();
        imageFile(image).replaceWithData(content.getData(), content.getSize());
    }

    static void set(int setting, int value) { Platform::VX_SetSetupValueInt(setting, value); }
    static Dsp::DSPSettingHelperImpl& helper() { return *Dsp::DSPSettingHelperImpl::getInstance(); }
    static juce::File volumeFile()
    {
        return juce::File(Platform::Configuration::get().systemPath).getChildFile("VX_Volume.ini");
    }
};
