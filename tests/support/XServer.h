#pragma once

#include "platform/base/Process.h"
#include "support/Eventually.h"

#include <cstdlib>

/**
    A virtual X server, which DISPLAY names while it lives. Its number comes from the process: one that others choose,
    as the first that is free, could be gone when the server starts again. Without Xvfb there is none.
*/
class XServer
{
public:
    /** As large as the unit's screen, or as a desktop. */
    explicit XServer(const juce::String& size = "800x480")
        : screen(size + "x24")
    {
        start();
    }

    ~XServer()
    {
        stop();
        setenv("DISPLAY", before.toRawUTF8(), 1);
    }

    static bool isInstalled() { return juce::File("/usr/bin/Xvfb").existsAsFile(); }

    bool isRunning() const { return runs; }

    void start()
    {
        if (!isInstalled())
            return;
        numberFile.getFile().deleteFile();
        server = Platform::createProcess("/bin/sh", { "-c",
                                                      "exec setpriv --pdeathsig TERM Xvfb $1 -displayfd 1 -screen 0 "
                                                      "$2 -nolisten tcp -noreset >\"$0\" 2>/dev/null",
                                                      numberFile.getFile().getFullPathName(), display, screen });
        // The number is there, with its line end, once the server takes connections.
        if (server == nullptr || !eventually([this] { return number().endsWithChar('\n'); }))
            return;
        setenv("DISPLAY", display.toRawUTF8(), 1);
        runs = true;
    }

    /** Ends the server as a crash would. */
    void stop()
    {
        if (server == nullptr)
            return;
        server->terminate();
        Platform::ProcessWaiter().wait({ server });
        server.reset();
        runs = false;
    }

private:
    juce::String number() const { return numberFile.getFile().loadFileAsString(); }

    const juce::String before = juce::SystemStats::getEnvironmentVariable("DISPLAY", {});
    static int nextNumber()
    {
        constexpr int first = 1000, serversEach = 8, processes = 5000;
        static int count = 0;
        return first + static_cast<int>(getpid()) % processes * serversEach + count++ % serversEach;
    }

    const juce::String screen;
    const juce::String display = ":" + juce::String(nextNumber());
    bool runs = false;
    juce::TemporaryFile numberFile;
    Platform::ProcessHandle server;
};
