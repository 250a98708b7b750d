#include "adapters/system/iconv_code_page.h"
#include "settings/start_settings.h"
#include "simulator/simulated_stores.h"

#include <cerrno>

#include <gtest/gtest.h>

namespace tarnex {
namespace {

TEST(StartSettings, AreTheFilesOwnOrTheDefaults) {
    const IconvCodePage utf8("UTF-8");
    const StartSettings set = ReadStartSettings(
        IniDocument("[SerialPorts]\nCOM1=/dev/ttyS9\nCOM20= /dev/串口 \n[ControlLink]\n"
                    "BindAddress=127.0.0.9\n[Encoding]\nCodePage=UTF-8\n",
                    utf8));
    EXPECT_EQ(set.device_paths[0], "/dev/ttyS9");
    EXPECT_EQ(set.device_paths[19], "/dev/串口");
    EXPECT_EQ(set.device_paths[1], "");
    EXPECT_EQ(set.bind_address, "127.0.0.9");
    EXPECT_EQ(set.code_page, "UTF-8");
    const StartSettings none = ReadStartSettings(IniDocument("", utf8));
    EXPECT_EQ(none.bind_address, "127.0.0.1");
    EXPECT_EQ(none.code_page, "GBK");
}

TEST(StartSettings, AFileInTheMiddleOfAChangeIsReadAgain) {
    const IconvCodePage gbk("GBK");
    const std::string whole = "[Check]\nCheck1(13)=1\n[ControlLink]\nBindAddress=127.0.0.9\n";
    SimulatedSettingsStore store;
    for (const char* first : {"missing", "unreadable", "", "[Check]\nCheck1(13"}) {
        store.Readable = std::string_view(first) != "unreadable";
        if (std::string_view(first) == "missing")
            store.Delete();
        else
            store.SetContent(first);
        const SettingsReading reading = ReadAtStart(store, gbk, [&] {
            store.Readable = true;
            store.SetContent(whole);
        });
        EXPECT_EQ(reading.content, whole) << first;
    }
    EXPECT_EQ(ReadAtStart(store, gbk, [&] { store.Delete(); }).content, whole);
}

TEST(StartSettings, AReadingProblemHasOwnWordsAndFittingAdvice) {
    const std::error_code links(ELOOP, std::generic_category());
    EXPECT_EQ(Unreadable("f", links), "The settings file f cannot be read (too many links lead to "
                                      "one another)");
    const std::error_code full(EMFILE, std::generic_category());
    EXPECT_NE(ReadingAdvice(full, "rights").find("holds so many files open"), std::string::npos);
}

TEST(StartSettings, SettingsPathIsBelowTheBaseFolder) {
    EXPECT_EQ(SettingsPath("/srv/win"), "/srv/win/system/Tarnex.ini");
    EXPECT_EQ(SettingsPath(""), "/var/lib/tarnexcomm/system/Tarnex.ini");
    EXPECT_EQ(SettingsPath(nullptr), "/var/lib/tarnexcomm/system/Tarnex.ini");
}

} // namespace
} // namespace tarnex
