#pragma once

namespace ApplicationLayer
{

/**
    Whether a change has an effect without the setup program. The dimmer's mode has none: only that program changes it.
*/
bool mattersWithoutSetup(int index);

/**
    Carries out a changed setting whose effect depends on nothing but its value: sound, marine network, radio,
    voltmeter. Nothing for any other setting. Any thread; the sound is written before it returns.
*/
void applySetting(int index);

} // namespace ApplicationLayer
