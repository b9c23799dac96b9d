#pragma once

#include <juce_core/juce_core.h>
#include <memory>

namespace Platform
{

class SerialCallBack
{
public:
    virtual ~SerialCallBack() = default;
    /** Received bytes, on the port's reader thread; the data is only valid during the call. */
    virtual void onReceive(const void* data, int length) = 0;
};

/** A serial port (8N1, raw) with a reader thread of its own while it is open. */
class SerialPort
{
public:
    explicit SerialPort(SerialCallBack& receiver);
    ~SerialPort(); ///< closes

    /** False when the device cannot be opened or set up; the reason is logged. An open port is closed first. */
    bool open(const juce::String& name, int baudRate);
    /** Ends the reader thread; no onReceive runs after it returns. Not to be called from onReceive. */
    void close();
    bool isOpen() const;
    /** Bytes written: `length`, or fewer on a closed port or an error. Blocks until the driver has taken them. */
    int write(const void* data, int length);

private:
    struct Backend;
    std::unique_ptr<Backend> backend;
    JUCE_DECLARE_NON_COPYABLE(SerialPort)
};

} // namespace Platform
