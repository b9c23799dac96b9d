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
    /** The device that was away is there, on the port's reader thread. */
    virtual void onDeviceBack() {}
};

/**
    A serial port (8N1, raw) with a reader thread of its own while it is open. When the device goes away the reader
    tries to open it again until the port is closed. One thread opens and closes; any thread writes.
*/
class SerialPort
{
public:
    explicit SerialPort(SerialCallBack& receiver);
    ~SerialPort(); ///< closes

    /**
        `name` is a device or "COM5:", the wired remote's port. False when it cannot be opened or set up, for example at
        a baud rate that is not a standard one; the reason is logged. An open port is closed first. With `awaitDevice`
        the port then counts as open and its device as away: it is tried again until it is there.
    */
    bool open(const juce::String& name, int baudRate, bool awaitDevice = false);
    /** Ends the reader thread; no onReceive runs after it returns. Not to be called from onReceive. */
    void close();
    /** From a successful or awaiting `open` until `close`, also while the device is away. */
    bool isOpen() const;
    /** Open, and the device is there. Any thread. */
    bool isConnected() const;
    /**
        Bytes written: `length`, or fewer on a closed port, without the device or on an error, which is logged. Blocks
        until the driver has taken them, or for a second in which it takes none.
    */
    int write(const void* data, int length);

private:
    struct Backend;
    std::unique_ptr<Backend> backend;
    JUCE_DECLARE_NON_COPYABLE(SerialPort)
};

} // namespace Platform
