#include "platform/settings/SetupStore.h"

#include "platform/base/Counter.h"
#include "platform/base/Logger.h"
#include "platform/config/Configuration.h"
#include "platform/record/Recorder.h"
#include "platform/settings/SetupEnvironment.h"
#include "platform/settings/SetupWriter.h"

#include <filesystem>

namespace Platform
{

namespace
{

constexpr Log logger { "platform/SetupStore", "SetupStore" };

Platform::Counter textsRefused { "settings.texts-refused", "texts that are too long to be stored" };

std::atomic<bool> readsOnly { false };

/** For a process that writes nothing: the store as the unit has it now. */
std::string readShared(int index)
{
    auto& environment = SetupEnvironment::get();
    std::string value;
    int result = environment.open(settingsFolder(), SetupEnvironment::Access::readOnly);
    if (result == MDB_SUCCESS)
        result = environment.read(index, value);
    if (result == MDB_SUCCESS)
        return value;
    // One that was only just made has its settings at the next look.
    if (environment.isEmpty())
        environment.close();
    static const auto factoryValues = readFactoryValues();
    const auto factoryValue = factoryValues.find(index);
    return factoryValue != factoryValues.end() ? factoryValue->second : std::string();
}

std::string readValue(int index)
{
    return recorded(
        Step::setting, [=] { return readsOnly ? readShared(index) : SetupWriter::get().read(index); }, index);
}

/** False, and logged, in a process that only reads settings. */
bool mayWrite(const std::string& what)
{
    if (readsOnly)
        logger().error("%s: this process only reads settings", what.c_str());
    return !readsOnly;
}

bool writeValue(int index, const std::string& value)
{
    const bool may = mayWrite("setting " + std::to_string(index));
    if (may)
        SetupWriter::get().set(index, value);
    recordStep(Step::setSetting, index, value, may);
    return may;
}

} // namespace

juce::int32 VX_GetSetupValueInt(int index)
{
    return decodeSetupInt(readValue(index)).value_or(0);
}

juce::String VX_GetSetupValueString(int index)
{
    return decodeSetupText(readValue(index)).value_or(juce::String());
}

bool VX_SetSetupValueInt(int index, juce::int32 value)
{
    return writeValue(index, encodeSetup(value));
}

bool VX_SetSetupValueString(int index, const juce::String& value)
{
    const auto text = value.toStdString();
    if (text.size() > longestSetupText)
    {
        ++textsRefused;
        logger().error("setting %d: a text of %zu bytes is refused", index, text.size());
        return false;
    }
    return writeValue(index, encodeSetup(text));
}

bool VX_IsSetupValueString(int index)
{
    return decodeSetupText(readValue(index)).has_value();
}

bool VX_IsSetupValueKnown(int index)
{
    return !readValue(index).empty();
}

bool VX_WaitForSetupInfo()
{
    return SetupWriter::get().waitUntilStored();
}

bool VX_LoadDataFromSystemFile()
{
    return SetupWriter::get().open();
}

bool VX_LoadDataFromFactoryFile()
{
    const auto values = readFactoryValues();
    if (values.empty() || !mayWrite("factory values"))
        return false;
    SetupWriter::get().replaceAll(values);
    std::error_code error;
    std::filesystem::remove_all(settingsFolder(), error);
    if (error)
        logger().error("%s: %s", settingsFolder().c_str(), error.message().c_str());
    return !error;
}

void VX_ReleaseSetupInfo()
{
    SetupWriter::get().close();
}

void VX_ReadSetupInfoOnly()
{
    readsOnly = true;
}

} // namespace Platform
