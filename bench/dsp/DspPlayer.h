#pragma once

#include "bench/dsp/DspModel.h"

#include <string>
#include <vector>

namespace Bench
{

/** Lets sound run through the outputs, in double precision, with the coefficients as they were at its making. */
class DspPlayer
{
public:
    explicit DspPlayer(std::vector<DspOutput> outputsToPlay);

    /**
        Both inputs have the same length. `results` gets one row for each output, of that length. Goes on where the
        previous call ended.
    */
    void process(std::span<const double> left, std::span<const double> right,
                 std::vector<std::vector<double>>& results);

private:
    /** A filter and what it remembers: direct form 1. */
    struct Stage
    {
        Biquad filter;
        double x1 = 0, x2 = 0, y1 = 0, y2 = 0;
        double next(double x);
    };
    struct Channel
    {
        DspOutput output;
        std::vector<Stage> stages;
    };
    std::vector<Channel> channels;
};

struct Played
{
    std::string error; ///< empty on success
    double seconds = 0;
    struct Peak
    {
        std::string output;
        double level = 0; ///< linear, 1 is full scale
    };
    std::vector<Peak> peaks;
    std::uint64_t clipped = 0; ///< samples beyond full scale, which are limited to it as a converter would
};

/**
    A WAV file of one or two channels at any rate through the DSP, into a WAV file of 24 bits at 48000 Hz: one channel for each
    output in the order of `dspOutputs`, or those alone whose name begins with `selection` ("front", "output A"). The
    file at `out` is replaced; after a failure it is as it was.
*/
Played playFile(const DspMemory& memory, const std::string& in, const std::string& out, const std::string& selection);

} // namespace Bench
