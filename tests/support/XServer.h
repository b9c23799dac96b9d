#pragma once

#include "platform/Process.h"
#include "support/Eventually.h"

#include <cstdlib>

/** A virtual X server on a free display, which DISPLAY names while it lives. Without Xvfb there is none. */
class XServer
{
public:
    XServer() { start(); }

    ~XServer()
    {
        stop();
        setenv("DISPLAY", before.toRawUTF8(), 1);
    }

    static bool isInstalled() { return juce::File("/usr/bin/Xvfb").existsAsFile(); }

    bool isRunning() const { return runs; }

    /** On the display that it had before, if there was one. */
    void start()
    {
        if (!isInstalled())
            return;
        numberFile.getFile().deleteFile();
        server = Platform::createProcess("/bin/sh", { "-c",
                                                      "exec setpriv --pdeathsig TERM Xvfb $1 -displayfd 1 -screen 0 "
                                                      "800x480x24 -nolisten tcp -noreset >\"$0\" 2>/dev/null",
                                                      numberFile.getFile().getFullPathName(), display });
        // The number is there, with its line end, once the server takes connections.
        if (server == nullptr || !eventually([this] { return number().endsWithChar('\n'); }))
            return;
        display = ":" + number().trim();
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
    juce::String display;
    bool runs = false;
    juce::TemporaryFile numberFile;
    Platform::ProcessHandle server;
};
