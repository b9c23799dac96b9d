#pragma once

#include "dsp/AudioServices.h"
#include "dsp/akm/BootTable.h"
#include "dsp/akm/FilterMap.h"
#include "dsp/akm/FixedPoint.h"
#include "kernel/DeviceWorker.h"
#include "kernel/Singleton.h"
#include "platform/base/Threads.h"

#include <optional>
#include <vector>

namespace Dsp
{

/**
    The AK7738. Every command is one block, which the chip verifies by a checksum of its own. A block that fails is
    logged, and the next one is tried. A chip of this machine gets nothing while an image is a stand-in. Any thread: a call only queues its blocks, and the thread "DSP" writes them in
    the order of the calls. When the chip cannot keep up, it gets only the newest value of each address.
*/
class ak7738Operator : public Kernel::Singleton<ak7738Operator>
{
public:
    /**
        Up to three times, until the DSP answers the block's checksum (CRC-16/XMODEM). At once: the thread "DSP", or a
        test in its place.
    */
    void writeBlock(std::span<const std::uint8_t> block);
    enum class Probe { noBus, noTransfer, silent, confirms };
    /**
        Whether the chip confirms an order that changes nothing: to take over words while none wait. At once, and only
        while no engine has the bus.
    */
    static Probe probe();
    /** Start-up line, registers, images, flat equaliser. It takes the chip some hundred milliseconds. */
    void boot();

    /** What of the status is the chip's. Any thread. */
    void addTo(DspStatus& status) const;

    /** Words into the running DSP, and the order to take them over; no other block comes in between. */
    void writeCoefficients(std::uint16_t address, std::span<const std::uint8_t> words, Bank bank);
    /** One gain word of a level in dB. */
    void writeGain(std::uint16_t address, double decibels, Bank bank);
    /** Registers and routing, all of it before any other block. */
    void writeRegisters(std::span<const RegisterValue> registers);

    // The equaliser.
    /** A user band 0 to 6 in groups 1, 2 and if wanted 3; dB, at most 12. Other bands are ignored. */
    void setGeqBand(int userBand, int gainDb, bool includeGroup3);
    /** Group 3 follows the other two, or is flat. */
    void syncGroup3(bool flat);
    /** The sound of this system's own programs is lifted at the bottom and lowered at the top. */
    void setSystemAudioCompensation(bool on);
    void setFrontHighPass(int crossoverIndex);
    void setHighPass(int crossoverIndex);
    void setLowPass(int crossoverIndex);
    void setSubwooferLowPass(bool on);
    /** dB in the order of the channels; the two memories drive the speakers crosswise. */
    void setChannelGains(const std::array<int, 4>& gains, Bank bank);

private:
    friend class Kernel::Singleton<ak7738Operator>;
    ak7738Operator() = default;

    using Block = std::vector<std::uint8_t>;

    bool isLeftAlone();
    void noteFailure(const char* what);
    void setRegisters(std::span<const RegisterValue> registers);
    void loadImages();
    void flattenEqualiser();
    void writeBand(const EqBand& band, int gainDb, bool groups1And2, bool group3);
    void writeFixedFilter(std::uint16_t address, FilterType type, int frequency, Bank bank);

    /** Over the gains of the bands, and recursive. */
    Platform::Mutex lock;
    std::array<int, numOfEqBands> bandGains {};
    struct Health
    {
        bool isBooted = false;
        std::uint64_t blocks = 0, failures = 0;
        const char* lastFailure = "";
        Platform::Clock::time_point lastFailureAt;
        std::optional<juce::String> leftAlone; ///< why; none while nothing was written yet
    };
    mutable std::mutex healthLock;
    Health health;
    bool unverified = false;               ///< said so in the log, and nothing was verified since; the thread "DSP"
    Kernel::DeviceWorker worker { "DSP" }; ///< last: its thread ends before what it uses
};

} // namespace Dsp
