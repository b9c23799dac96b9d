#include "bench/console/Verb.h"

namespace Bench
{

namespace
{

std::string setId(TestEquipment& equipment, const Arguments& given)
{
    const auto text = given.text(0);
    if (text.size() > TestEquipment::longestId)
        return "an id has at most " + std::to_string(TestEquipment::longestId) + " characters";
    equipment.setDeviceId(text);
    return {};
}

std::string send(TestEquipment& equipment, const Arguments& given)
{
    const auto content = given.bytes(0);
    if (content.size() > TestEquipment::longestContent)
        return "a command with its parameters has at most " + std::to_string(TestEquipment::longestContent) + " bytes";
    equipment.send(content);
    return {};
}

} // namespace

Verbs testEquipmentVerbs()
{
    return {
        { "autotest enter", "Begins the test.", on(&Unit::testEquipment, &TestEquipment::enterTestMode) },
        { "autotest leave", "Ends it.", on(&Unit::testEquipment, &TestEquipment::leaveTestMode) },
        { "autotest key ITEM [NUMBER]", "A key; of item 14, power, NUMBER 1 is off and 0 is on.",
          on(&Unit::testEquipment,
             [](auto& equipment, auto& given) { equipment.pressKey(given.byte(0), given.byte(1)); }) },
        { "autotest source ITEM NUMBER", "Asks for a source by its type.",
          on(&Unit::testEquipment,
             [](auto& equipment, auto& given) { equipment.requestSource(given.byte(0), given.byte(1)); }) },
        { "autotest states", "Asks for the devices' states.",
          on(&Unit::testEquipment, &TestEquipment::requestDeviceStates) },
        { "autotest volume NUMBER", "Sets the volume.",
          on(&Unit::testEquipment, [](auto& equipment, auto& given) { equipment.setVolume(given.byte(0)); }) },
        { "autotest id TEXT...", "Sets the device id, the last six characters.", on(&Unit::testEquipment, setId) },
        { "autotest text ITEM", "Asks for a text.",
          on(&Unit::testEquipment, [](auto& equipment, auto& given) { equipment.requestText(given.byte(0)); }) },
        { "autotest send BYTE...", "Sends any command with its parameters.", on(&Unit::testEquipment, send) },
        { "autotest again", "Asks for the last message once more.",
          on(&Unit::testEquipment, &TestEquipment::askAgain) },
        { "autotest hold", "From now on it acknowledges nothing by itself.",
          on(&Unit::testEquipment, [](auto& equipment, auto&) { equipment.hold(true); }) },
        { "autotest ack", "Acknowledges once.", on(&Unit::testEquipment, &TestEquipment::acknowledge) },
        { "autotest go", "Acknowledges by itself again.",
          on(&Unit::testEquipment, [](auto& equipment, auto&) { equipment.hold(false); }) },
        { "autotest damage [AMOUNT]",
          "Its next frame has a wrong sum, or so many; acknowledgements that go by themselves are spared.",
          on(&Unit::testEquipment, [](auto& equipment, auto& given) { equipment.damageNext(given.number(0, 1)); }) },
    };
}

} // namespace Bench
