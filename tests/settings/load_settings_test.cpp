#include "adapters/system/iconv_code_page.h"
#include "settings/device_record.h"
#include "settings/load_settings.h"
#include "simulator/simulated_stores.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

const IconvCodePage kGbk("GBK");

LoadedSettings Load(const std::string& content, const Settings& previous = {}) {
    return ReadSettings(IniDocument(content, kGbk), previous);
}

TEST(LoadSettings, AMissingFileLeavesTheLinkOnAndTheServiceOff) {
    const LoadedSettings loaded = Load("");
    EXPECT_TRUE(loaded.enabled);
    EXPECT_FALSE(loaded.allowed);
    EXPECT_FALSE(loaded.settings.AutoSearchOff);
    EXPECT_FALSE(loaded.settings.LinkEnabled[0]);
    EXPECT_EQ(loaded.settings.SendCount, 0);
}

TEST(LoadSettings, GatesCompareExactly) {
    EXPECT_FALSE(Load("[Service]\nEnable=Disable\n").enabled);
    EXPECT_TRUE(Load("[Service]\nEnable=disable\n").enabled);
    EXPECT_TRUE(Load("[Service]\nEnable=Disable \n").enabled);
    EXPECT_TRUE(Load("[Check]\nCheck1(13)=1\n").allowed);
    EXPECT_FALSE(Load("[Check]\nCheck1(13)= 1\n").allowed);
}

TEST(LoadSettings, EveryValueComesFromItsOwnKey) {
    // Switched on one by one: a swapped pair of keys shows.
    const auto on = [](int number) {
        return Load("[Check]\nCheck1(" + std::to_string(number) + ")=1\n").settings;
    };
    EXPECT_TRUE(on(58).ForwardFeeSMS);
    EXPECT_TRUE(on(5).SMSNotifyOn);
    EXPECT_TRUE(on(39).EmailNotifyOn);
    EXPECT_TRUE(on(42).SwitchCheck42);
    EXPECT_TRUE(on(43).SwitchCheck43);
    EXPECT_TRUE(on(6).QuietTimeOn);
    EXPECT_FALSE(on(7).AutoSearchOff);
    EXPECT_TRUE(Load("[Check]\nCheck1(7)=0\n").settings.AutoSearchOff);
    EXPECT_EQ(on(46).QuietDay, (std::array<bool, 7>{true}));
    EXPECT_TRUE(on(52).QuietDay[6]);
    EXPECT_EQ(on(8).LinkEnabled, (std::array<bool, 5>{true}));
    EXPECT_TRUE(on(12).LinkEnabled[4]);

    const Settings texts = Load("[Text]\nText1(37)=/x.db\nText1(38)=7:05\nText1(51)=23:00\n"
                                "[Combo]\nCombo1(6)=3 times\n[Alarm]\nAlarmLabel(7)=S+E\n")
                               .settings;
    EXPECT_EQ(texts.LogPath, u"/x.db");
    EXPECT_EQ(texts.QuietTimes[0], u"7:05");
    EXPECT_EQ(texts.QuietTimes[13], u"23:00");
    EXPECT_EQ(texts.SendCount, 3);
    EXPECT_EQ(texts.NotifyMode, u"S+E");
}

TEST(LoadSettings, ANumberBeyond16BitsKeepsTheOldOne) {
    Settings previous;
    previous.SendCount = 4;
    previous.SMSNotifyOn = true;
    const Settings now = Load("[Combo]\nCombo1(6)=32768\n", previous).settings;
    EXPECT_EQ(now.SendCount, 4);
    EXPECT_FALSE(now.SMSNotifyOn);
    EXPECT_EQ(Load("[Combo]\nCombo1(6)=\n", previous).settings.SendCount, 0);
}

TEST(DeviceRecord, InvalidatingMarksAllNineInOneStep) {
    SimulatedSettingsStore store;
    MyIniFile file(store, kGbk);
    store.SetContent("[TarnexComm]\nLastCom=3\nNameEnable=1\n");
    const auto before = store.Stamp()->changed;
    InvalidateUnitSettings(file);
    EXPECT_EQ(store.Read().content,
              "[TarnexComm]\nLastCom=3\nNameEnable=@v@\nTelNo1=@v@\nTelNo2=@v@\n"
              "SMSCenter=@v@\nCommAlarmTime=@v@\nSendTimes=@v@\n"
              "CommAlarmEnable=@v@\nPowrAlarmEnable=@v@\nTarnexName=@v@\n");
    EXPECT_EQ(store.Stamp()->changed, before + 1);
}

} // namespace
} // namespace tarnex
