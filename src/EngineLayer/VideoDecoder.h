#pragma once

namespace EngineLayer
{

/** The camera's video decoder on the I2C bus. One thread at a time. */
class VideoDecoder
{
public:
    /** Powers the decoder and writes its registers; only the first call does anything, whether or not it succeeds. */
    void initialise();
    /** True when the decoder sees a picture; false also when it does not answer. Blocks for the bus. */
    bool hasSignal() const;

private:
    bool initialised = false;
};

} // namespace EngineLayer
