#pragma once

#include "platform/base/CommandLine.h"
#include "platform/channel/Ipc.h"

/** What goes between a program and the engine, in words that are the same in every run. */
namespace BenchProgram
{

/**
    "{key=1 name=\"HARBOUR\" list=[{...} {...}]}", keys in order of the alphabet; "" for none or an empty one. Bytes are
    a text when they are one, else hexadecimal.
*/
juce::String describe(const Platform::Bundle::Ptr& bundle);
/** "pageHide mbFM for mbEQ", with what the page's handler attached. */
juce::String describe(const Platform::AppCommandLine& line);
/** "1323 0 3 {...}". */
juce::String describe(const Platform::RemoteMessage& message);

} // namespace BenchProgram
