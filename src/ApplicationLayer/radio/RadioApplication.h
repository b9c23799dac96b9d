#pragma once

#include "ApplicationLayer/framework/ApplicationTask.h"
#include "ApplicationLayer/radio/RadioBodies.h"
#include "ApplicationLayer/radio/RadioReports.h"

#include <set>

namespace ApplicationLayer
{

/**
    The radio program and the tuner, which belongs to the microcontroller: the program's orders become frames, and the
    tuner's reports go to the program in batches. A weather alert that lasts brings the weather band to the front. The
    weather band's page is registered last, so that it stands for the program.
*/
class RadioApplication : public ApplicationTask, public Kernel::SystemTimer
{
public:
    static constexpr int weatherAlertTimer = 1;
    static constexpr int weatherAlertMs = 4000;

    RadioApplication();

    void onStop() override { stopTimer(weatherAlertTimer); }
    void handleOwnMessage(const Kernel::SystemMessage& message) override;

    /** Values that were discarded before a program took them. */
    int getDiscardedBodies() const { return bodies.getDiscarded(); }

private:
    void unitReady();
    void storeArea() const;
    void changeRegion(int areaCode);
    void weatherAlertLasts();

    // What the program asks for.
    void fromProgram(const Platform::RemoteMessage& remote);
    void control(juce::int32 which, juce::int32 value);
    void programEvent(juce::int32 which, juce::int32 value);
    void notifyTuner() const;
    void changeFrequency(juce::int32 value) const;
    void changeSensitivity(juce::int32 value) const;
    void setTestMode(bool on);

    // RadioReception.cpp: what the tuner reports.
    void fromTuner(int command, const Kernel::Payload& payload);
    void take(const std::monostate&) {}
    void take(const FrequencyReport& report);
    void take(const StereoReport& report);
    void take(const ProgrammeNameReport& report);
    void take(const RadioTextReport& report);
    void take(const WeatherAlertReport& report);
    void take(const SensitivityReport& report);
    void takeText(RadioBodyKey key, const char* name, std::span<const std::uint8_t> text,
                  std::span<std::uint8_t> stored);

    void autoTest(std::span<const std::uint8_t> request) const;

    TunerState tuner;
    RadioBodies bodies;
    std::array<std::uint8_t, 8> psName {};
    std::array<std::uint8_t, 64> radioText {};
    std::set<std::pair<int, int>> misunderstood; ///< command and kind of the reports that were logged for it
    bool weatherAlert = false;
    bool testMode = false; ///< the program shows its sensitivity test
    bool started = false;  ///< the settings are the unit's from MSG_SYS_READY on
};

} // namespace ApplicationLayer
