#include "EngineApi/DeviceStatus.h"
#include "EngineLayer/devices/DeviceTable.h"
#include "EngineLayer/devices/SourceAgreement.h"

#include <gtest/gtest.h>

using namespace EngineApi;
using namespace EngineLayer;

TEST(DeviceTableTest, TheStatusBytesSayWhatIsPresent)
{
    const std::pair<std::vector<int>, DeviceTable::StatusBytes> cases[] = {
        { {}, { 0, 0 } },
        { { usbStorage }, { 1, 0 } },
        { { iPodConnected, bluetoothConnected }, { 0, 0x06 } },
        { { pandoraOniPod }, { 0, 0x08 } },
        { { pandoraOnBluetooth }, { 0, 0x08 } },
        { { satelliteTuner }, { 0, 0x10 } },
        { { cameraVideo, triggerInput, spareDevice }, { 0, 0 } },
    };
    for (const auto& [kinds, status] : cases)
    {
        DeviceTable table;
        for (const int kind : kinds)
            EXPECT_TRUE(table.set(kind, true));
        table.takeChanges();
        EXPECT_EQ(table.getReportedStatus(), status) << testing::PrintToString(kinds);
    }
}

TEST(DeviceTableTest, ChangesAreAnnouncedInTheirOrderAndOnce)
{
    DeviceTable table;
    for (const int kind : { 19, 18, 17, 16, 15, 6, 2, 1, 0 })
        table.set(kind, true);
    EXPECT_EQ(table.takeChanges(), (std::vector { 1, 0, 2, 6, 15, 16, 17, 18, 19 }));
    EXPECT_FALSE(table.set(0, true)) << "no change";
    table.set(2, false);
    table.set(2, true);
    EXPECT_TRUE(table.isReported()) << "there and back";
    for (const int kind : { -1, 3, 14, 20, 1000 })
        EXPECT_FALSE(table.set(kind, true));
    EXPECT_TRUE(table.takeChanges().empty());
    table.set(pandoraOniPod, false);
    table.takeChanges();
    EXPECT_EQ(table.getReportedStatus().others & 0x08, 0x08) << "the other link still offers it";
}

TEST(SourceAgreementTest, BothSidesMayChangeTheSource)
{
    using Request = SourceAgreement::Request;
    using Report = SourceAgreement::Report;
    const McuSource fm { 1, 0 };
    const McuSource usb { 10, 0 };
    SourceAgreement agreement;

    EXPECT_EQ(agreement.mcuRequests(fm), Request::first);
    EXPECT_EQ(agreement.unitSwitchedTo(usb), Report::nothing) << "not what was asked for";
    EXPECT_EQ(agreement.unitSwitchedTo(fm), Report::confirm);
    EXPECT_EQ(agreement.unitSwitchedTo(usb), Report::ask);
    EXPECT_FALSE(agreement.isAgreed());
    agreement.mcuConfirms(fm);
    EXPECT_FALSE(agreement.isAgreed()) << "an old report";
    agreement.mcuConfirms(usb);
    EXPECT_TRUE(agreement.isAgreed());
    EXPECT_EQ(agreement.mcuRequests(usb), Request::repeated);
    EXPECT_EQ(agreement.mcuRequests(fm), Request::schedule);
    EXPECT_TRUE(agreement.isAgreed());
    EXPECT_EQ(agreement.mcuRequests(fm), Request::repeated) << "it does not schedule twice";

    agreement.restart();
    EXPECT_EQ(agreement.mcuRequests(usb), Request::first);
    EXPECT_FALSE(agreement.isAgreed());
    EXPECT_EQ(agreement.mcuRequests(usb), Request::repeated);
    EXPECT_TRUE(agreement.isAgreed());
}

// The unit changes twice before the first answer comes, and the second change is swallowed; later a frame is lost.
TEST(SourceAgreementTest, WhatTheMicrocontrollerHasMissedIsAskedForAgain)
{
    using Report = SourceAgreement::Report;
    const McuSource fm { 1, 0 };
    const McuSource usb { 10, 0 };
    SourceAgreement agreement;
    EXPECT_FALSE(agreement.takeLost().has_value()) << "nothing plays yet";

    EXPECT_EQ(agreement.unitSwitchedTo(fm), Report::ask);
    EXPECT_EQ(agreement.unitSwitchedTo(usb), Report::nothing);
    agreement.mcuConfirms(fm);
    EXPECT_FALSE(agreement.takeLost().has_value()) << "the answer may be on its way";
    EXPECT_EQ(agreement.takeLost(), usb);
    EXPECT_EQ(agreement.takeLost(), usb) << "as long as nobody answers";
    agreement.mcuConfirms(usb);
    EXPECT_FALSE(agreement.takeLost().has_value());
    EXPECT_EQ(agreement.unitSwitchedTo(fm), Report::ask);

    // Nobody answers, and the unit comes back to what it had asked for: that is no answer of the microcontroller's.
    EXPECT_EQ(agreement.unitSwitchedTo(usb), Report::nothing);
    EXPECT_EQ(agreement.unitSwitchedTo(fm), Report::confirm);
    EXPECT_FALSE(agreement.takeLost().has_value());
    EXPECT_EQ(agreement.takeLost(), fm);
    EXPECT_EQ(agreement.mcuRequests(usb), SourceAgreement::Request::first);
    EXPECT_EQ(agreement.unitSwitchedTo(usb), Report::confirm);
    EXPECT_FALSE(agreement.takeLost().has_value());
    EXPECT_FALSE(agreement.takeLost().has_value()) << "the microcontroller's own wish is confirmed to it";
}
