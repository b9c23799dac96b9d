#pragma once

#include "EngineApi/AutoTestSession.h"
#include "EngineApi/Bars.h"
#include "EngineApi/Provided.h"
#include "EngineApi/WiredRemote.h"
#include "platform/base/Logger.h"
#include "support/FakeAudio.h"

#include <array>
#include <set>
#include <string>
#include <vector>

// What the managers talk to, without devices: each writes down what it is asked for.

class FakeRemote : public EngineApi::WiredRemote
{
public:
    bool showText(int row, int column, const juce::String& text, bool temporary) override
    {
        note("text " + juce::String(row) + " " + juce::String(column) + " " + text + (temporary ? " temporary" : ""));
        return true;
    }
    bool showLasting(int row, int column, const juce::String& text) override
    {
        note("lasting " + juce::String(row) + " " + juce::String(column) + " " + text);
        return true;
    }
    void clearRow(int row) override { note("clear row " + juce::String(row)); }
    void clearDisplay(bool forget) override { note(forget ? "clear and forget" : "clear"); }
    void setDimmer(int level) override { note("dimmer " + juce::String(level)); }
    void restoreAfter(int ms) override { note("restore after " + juce::String(ms)); }
    bool isRestorePending() override { return false; }
    bool restore() override
    {
        note("restore");
        return true;
    }

    void note(const juce::String& call) { calls.push_back(call.toStdString()); }
    std::vector<std::string> calls;
};

template <typename Bar>
class FakeBar : public Bar
{
public:
    void postMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2, Kernel::Payload) override
    {
        messages.push_back({ id, arg1, arg2 });
    }
    std::vector<std::array<int, 3>> messages;
};

class FakeVolumeBar : public FakeBar<EngineApi::VolumeBar>
{
public:
    void updateImages(int) override {}
    bool isShown() const override { return shown; }
    bool shown = false;
};

class FakeFavoriteBar : public FakeBar<EngineApi::FavoriteBar>
{
public:
    bool isShown() const override { return shown; }
    int getCurrentIndex() const override { return index; }
    bool isStored(int favourite) const override { return stored.count(favourite) != 0; }
    void setFavoriteCount(int offered) override { count = offered; }
    void refresh() override { ++refreshes; }
    bool shown = false;
    int index = 1;
    int count = 0;
    int refreshes = 0;
    std::set<int> stored;
};

class FakeAutoTest : public EngineApi::AutoTestSession
{
public:
    void start() override { running = true; }
    bool isRunning() const override { return running; }
    void addMsgToBuffer(const juce::MemoryBlock& message) override { messages.push_back(message); }
    void clearBuffer() override { messages.clear(); }
    void setPeerState(bool, int state) override { peerStates.push_back(state); }

    /** What the equipment is told since the last call, as "82 01". */
    std::vector<std::string> takeAnswers()
    {
        std::vector<std::string> said;
        for (const auto& message : std::exchange(messages, {}))
            said.push_back(Platform::hexPairs(message.getData(), static_cast<int>(message.getSize())).toStdString());
        return said;
    }

    bool running = false;
    std::vector<juce::MemoryBlock> messages;
    std::vector<int> peerStates;
};

/** The devices that most managers look for, as long as it lives. */
class ProvidedFakes
{
protected:
    ProvidedFakes() { provide(true); }
    ~ProvidedFakes() { provide(false); }

    FakeAudio audio;
    FakeRemote remote;
    FakeVolumeBar volumeBar;
    FakeFavoriteBar favouriteBar;
    FakeAutoTest session;

private:
    void provide(bool on)
    {
        using EngineApi::Provided;
        Provided<Dsp::ChipManager>::set(on ? &audio : nullptr);
        Provided<EngineApi::WiredRemote>::set(on ? &remote : nullptr);
        Provided<EngineApi::VolumeBar>::set(on ? &volumeBar : nullptr);
        Provided<EngineApi::FavoriteBar>::set(on ? &favouriteBar : nullptr);
        Provided<EngineApi::AutoTestSession>::set(on ? &session : nullptr);
    }
};
