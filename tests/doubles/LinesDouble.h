#pragma once

#include <cstdint>
#include <vector>

namespace Platform::doubles
{

/** The GPIO lines and I2C devices of a test: what was done to them, and what they answer. Any thread. */
struct LinesDouble
{
    enum class Operation { function, write };

    struct PinCall
    {
        int line;
        Operation operation;
        int value; ///< function number or level written
        bool operator==(const PinCall&) const = default;
    };

    struct RegisterWrite
    {
        int address; ///< 8-bit form, as given
        int registerNumber;
        std::uint8_t value;
        bool operator==(const RegisterWrite&) const = default;
    };

    static void reset();

    /** Every call since the last `takePinCalls`, in order. */
    static std::vector<PinCall> takePinCalls();
    /** The level that was written; 0 at first. */
    static int getPin(int line);

    /** A failing device answers neither writes nor reads. */
    static void failI2cDevice(int address, bool fails);
    /** The value that reads answer; 0 at first. A write changes it too. */
    static void setRegister(int address, int registerNumber, std::uint8_t value);
    static std::vector<RegisterWrite> takeRegisterWrites();
    /** Devices that are open now. */
    static int getOpenI2cDevices();
};

} // namespace Platform::doubles
