// What the engine says is set would be so after a loss of power: the files have it, read as another process would.
#include "EngineApi/Settings.h"
#include "bench/simulation/Promises.h"
#include "dsp/DSPSettingHelperImpl.h"
#include "platform/config/Configuration.h"
#include "platform/settings/SetupEnvironment.h"
#include "platform/settings/SetupStore.h"
#include "platform/settings/SetupWriter.h"

namespace Simulation
{

namespace
{

constexpr int highestSetting = 2047;

/** The store of settings, opened anew without its lock: nobody writes it meanwhile. */
class StoredSettings
{
public:
    StoredSettings()
    {
        constexpr unsigned flags = MDB_RDONLY | MDB_NOLOCK;
        constexpr mdb_mode_t noMatter = 0;
        result = mdb_env_create(&environment);
        if (result == MDB_SUCCESS)
            result = mdb_env_set_maxdbs(environment, 1);
        if (result == MDB_SUCCESS)
            result = mdb_env_open(environment, Platform::settingsFolder().c_str(), flags, noMatter);
        if (result == MDB_SUCCESS)
            result = mdb_txn_begin(environment, nullptr, MDB_RDONLY, &transaction);
        if (result == MDB_SUCCESS)
            result = mdb_dbi_open(transaction, Platform::SetupEnvironment::databaseName, 0, &database);
    }
    ~StoredSettings()
    {
        mdb_txn_abort(transaction);
        mdb_env_close(environment);
    }
    StoredSettings(const StoredSettings&) = delete;
    StoredSettings& operator=(const StoredSettings&) = delete;

    /** Empty when it can be read. */
    std::string error() const { return result == MDB_SUCCESS ? "" : mdb_strerror(result); }

    /** As the store encodes it; empty when it is not there. */
    std::string read(int index) const
    {
        std::array<std::uint8_t, 4> key {};
        for (std::size_t at = 0; at < key.size(); ++at)
            key[at] = static_cast<std::uint8_t>(index >> (8 * (key.size() - 1 - at)));
        MDB_val name { key.size(), key.data() };
        MDB_val value {};
        if (mdb_get(transaction, database, &name, &value) != MDB_SUCCESS)
            return {};
        return { static_cast<const char*>(value.mv_data), value.mv_size };
    }

private:
    MDB_env* environment = nullptr;
    MDB_txn* transaction = nullptr;
    MDB_dbi database = 0;
    int result = MDB_SUCCESS;
};

std::string settingsAreStored(SimulatedUnit&, const Since&)
{
    const StoredSettings store;
    if (const auto error = store.error(); !error.empty())
        return "the store: " + error;
    for (int index = 0; index <= highestSetting; ++index)
    {
        if (!EngineApi::isSettingKnown(index))
            continue;
        const auto stored = store.read(index);
        const auto name = "setting " + std::to_string(index);
        if (Platform::VX_IsSetupValueString(index))
        {
            if (const auto text = EngineApi::getSettingString(index); Platform::decodeSetupText(stored) != text)
                return name + " is not stored as \"" + text.toStdString() + "\"";
        }
        else if (const auto value = EngineApi::getSettingInt(index); Platform::decodeSetupInt(stored) != value)
            return name + " is not stored as " + std::to_string(value);
    }
    return {};
}

std::string volumesAreStored(SimulatedUnit&, const Since&)
{
    const juce::File file(juce::File(Platform::AppConfig::getSystemFilePath()).getChildFile("VX_Volume.ini"));
    juce::StringPairArray stored;
    for (const auto& line : juce::StringArray::fromLines(file.loadFileAsString()))
        if (line.containsChar('='))
            stored.set(line.upToFirstOccurrenceOf("=", false, false).trim(),
                       line.fromFirstOccurrenceOf("=", false, false).trim());
    for (const auto& [key, ofZone2] : { std::pair { "Src", false }, { "Zone2", true } })
    {
        const juce::String volume(Dsp::DSPSettingHelperImpl::getInstance()->getVolume(ofZone2));
        // A unit that was never louder or softer needs no file.
        if (stored.getValue(key, "0") != volume)
            return std::string(key) + " is stored as \"" + stored[key].toStdString() + "\", the volume is " +
                   volume.toStdString();
    }
    return {};
}

constexpr Promise all[] {
    { "settings are stored", settingsAreStored, true },
    { "volumes are stored", volumesAreStored, true },
};

} // namespace

std::span<const Promise> storePromises()
{
    return all;
}

} // namespace Simulation
