#include "platform/linux/iconv_code_page.h"
#include "settings/load_settings.h"
#include "tests/temp_folder.h"

#include <sstream>

#include <gtest/gtest.h>

namespace tarnex {
namespace {

TEST(SampleSettings, AServiceRunsWithThemUnchangedAndObeysNobody) {
    const std::string content = FileContent(TARNEX_PACKAGING "/Tarnex.ini.sample");
    const IconvCodePage gbk("GBK");
    const IniDocument sample(content, gbk);
    const LoadedSettings loaded = ReadSettings(sample, {});
    EXPECT_TRUE(loaded.enabled);
    EXPECT_TRUE(loaded.allowed);
    EXPECT_FALSE(loaded.settings.AutoSearchOff);
    EXPECT_TRUE(loaded.settings.MultiLink);
    EXPECT_EQ(loaded.settings.LinkEnabled, (std::array{true, true, true, true, true}));
    EXPECT_EQ(loaded.settings.SendCount, 1);
    EXPECT_EQ(loaded.settings.LogPath, u"/var/lib/tarnexcomm/log.db");
    // An empty one would be written to the unit for ever, an empty number let everybody in.
    for (const TextView key : {u"Text1(34)", u"Text1(35)", u"Text1(36)", u"Text1(32)"})
        EXPECT_NE(sample.Get(u"Text", key), u"") << ToUtf8(key);
    EXPECT_NE(sample.Get(u"combo", u"combo1(5)"), u"");
    for (const TextView key : {u"Check1(44)", u"Check1(45)", u"Check1(57)"})
        EXPECT_EQ(sample.Get(u"Check", key), u"0") << ToUtf8(key);
}

TEST(SampleSettings, EveryLineIsWhatItLooksLike) {
    std::istringstream lines(FileContent(TARNEX_PACKAGING "/Tarnex.ini.sample"));
    for (std::string line; std::getline(lines, line);) {
        for (const char c : line)
            ASSERT_TRUE(c >= ' ' && c <= '~') << line;
        if (line.empty() || line[0] == ';' || (line[0] == '[' && line.back() == ']'))
            continue;
        const std::size_t equals = line.find('=');
        ASSERT_NE(equals, std::string::npos) << line;
        // A remark behind a value would be part of it.
        EXPECT_EQ(line.find_first_of("; ", equals), std::string::npos) << line;
    }
}

} // namespace
} // namespace tarnex
