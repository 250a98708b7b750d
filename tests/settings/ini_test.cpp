#include "adapters/system/system_code_page.h"
#include "settings/ini_document.h"
#include "settings/my_ini_file.h"
#include "simulator/simulated_stores.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

const SystemCodePage kGbk("GBK");

Text Read(const std::string& content, TextView section, TextView key) {
    return Text(IniDocument(content, kGbk).Get(section, key));
}

TEST(IniDocument, FindsTheFirstKeyOfTheFirstSection) {
    const std::pair<std::string, Text> rows[] = {
        {"[Text]\r\nText1(33)=Com3\r\n", u"Com3"},
        {"[tEXT]\n  tExT1(33)  = \"Com 3\" ", u" \"Com 3\" "},
        {"\xEF\xBB\xBF[Text]\nText1(33)=first line marked", u"first line marked"},
        {"[Text]\nText1(33)=1\nText1(33)=2", u"1"},
        {"[Text]\nA=1\n[B]\nText1(33)=2\n[Text]\nText1(33)=3", u""},
        {"Text1(33)=0\n[Text] ; our own\n;Text1(33)=1\n ; Text1(33)=2\nText1(33)=3;4=5", u"3;4=5"},
        {"[Other\nText1(33)=1\n[Text]\nText1(33)\n=2\nText1(33)=", u""},
        {"[Text]\nText1(33)=a\rb\r\n", u"a\rb"},
        {"", u""},
        {std::string("[Text]\nText1(33)=a\0b\n", 21), u"ab"},
        {"[Text]\nText1(33)=" + std::string(127, 'x') + "yz", Text(127, u'x') + u"y"},
    };
    for (const auto& [content, value] : rows)
        EXPECT_EQ(Read(content, u"Text", u"Text1(33)"), value) << content;
}

TEST(IniDocument, SecondHalvesOfCharactersAreNoSyntax) {
    // The second bytes of these characters are "[", "]", "\" and a letter.
    const std::string tricky = "\x81\x5B\x81\x5D\x81\x5C\x81\x41";
    const std::string content = "[" + tricky + "]\r\n" + tricky + "=" + tricky + "\r\n";
    const Text name = kGbk.Decode(tricky);
    EXPECT_EQ(Read(content, name, name), name);
    EXPECT_EQ(Read("[" + tricky + "]\nk=\x81\n", name, u"k"), u"?");
    // "\x81\x41" and "\x81\x61" differ by the case of a byte only, and are two characters.
    EXPECT_EQ(Read("[S]\n\x81\x61=1\n\x81\x41=2\n", u"S", kGbk.Decode("\x81\x41")), u"2");
    EXPECT_EQ(IniDocument::Set(content, kGbk, name, name, u"设"),
              "[" + tricky + "]\r\n" + tricky + "=\xC9\xE8\r\n");
}

using BeforeAndAfter = std::pair<const char*, std::string>;

TEST(IniDocument, ChangesNothingButTheOneValue) {
    const BeforeAndAfter rows[] = {
        {"", "[S]\r\nK=v\r\n"},
        {"[S]\nK=old", "[S]\nK=v"},
        {"; \xFF\n[s] x\r\n  k  = old \r\nK=2\r\n", "; \xFF\n[s] x\r\n  k  =v\r\nK=2\r\n"},
        {"[S]\n;K=1\nA=\xFF\x81\n\n; about T\n[T]\nK=1\n",
         "[S]\n;K=1\nA=\xFF\x81\nK=v\n\n; about T\n[T]\nK=1\n"},
        {"[S]\r\n\r\n[S]\r\nK=1\r\n", "[S]\r\nK=v\r\n\r\n[S]\r\nK=1\r\n"},
        {"[S]\r\nA=1", "[S]\r\nA=1\r\nK=v"},
        {"[S]\r\nA=1\r", "[S]\r\nA=1\r\nK=v"}, // half a line end
        {"[S]\r\nK=old\r", "[S]\r\nK=v\r"},
        {"[T]\nK=1", "[T]\nK=1\n[S]\nK=v"},
        {"[T]\nK=1\n", "[T]\nK=1\n[S]\nK=v\n"},
        {"K=1\nrubbish \x81\n", "K=1\nrubbish \x81\n[S]\nK=v\n"},
    };
    for (const auto& [before, after] : rows) {
        EXPECT_EQ(IniDocument::Set(before, kGbk, u"S", u" K ", u"v"), after);
        EXPECT_EQ(Read(after, u"S", u"K"), u"v");
    }
}

TEST(IniDocument, RefusesWhatAReaderWouldNotFindAgain) {
    struct {
        Text section, key, value;
    } const rows[] = {
        {u"S\n[T", u"K", u"v"},   {u"S]", u"K", u"v"},         {u"S", u"K=", u"v"},
        {u"S", u";K", u"v"},      {u"S", u"[K", u"v"},         {u"S", u"K\r", u"v"},
        {u"S", u"K\u0E01", u"v"}, {u"S", u"", u"v"},           {u"S", u"K", u"v\nA=0"},
        {u"S", u"K", u"v\r"},     {u"S", Text(1, u'\0'), u"v"}};
    for (const auto& row : rows)
        EXPECT_FALSE(IniDocument::Set("[S]\nK=1\n", kGbk, row.section, row.key, row.value));
    // A value may be changed by the code page; it cannot break the file.
    EXPECT_EQ(IniDocument::Set("[S]\nK=1\n", kGbk, u"S", u"K", u"\u0E01]=[;"), "[S]\nK=?]=[;\n");
}

TEST(IniDocument, RemovesTheLinesThatCount) {
    const BeforeAndAfter rows[] = {
        {"[S]\r\nA=1\r\n k = x\r\n; c\r\n", "[S]\r\nA=1\r\n; c\r\n"},
        {"[S]\nK=1\nA=1\nK=2\n[S]\nK=3\n", "[S]\nA=1\n[S]\nK=3\n"},
        {"[S]\nA=1\nK=", "[S]\nA=1\n"},
        {"K=1\n[T]\nK=1\n[S]\n;K=1\n", "K=1\n[T]\nK=1\n[S]\n;K=1\n"},
    };
    for (const auto& [before, after] : rows)
        EXPECT_EQ(IniDocument::Remove(before, kGbk, u"S", u"K"), after);
}

TEST(IniDocument, ListsTheLinesThatNeverCountToo) {
    const auto lines = IniDocument::KeyLines(
        "; c\nA=0\n[S]\nK=" + std::string(200, 'x') + "\n\n k =2\n[T]\nrubbish\nA=\xC9\xE8", kGbk);
    Text all;
    for (const auto& line : lines)
        all +=
            ToText(line.number) + u" " + line.section + u"/" + line.key + u"/" + line.value + u";";
    EXPECT_EQ(all, u"2 /A/0;4 S/K/" + Text(200, u'x') + u";6 S/k/2;9 T/A/设;");
}

// Counts the readings and lets a test decide whether the stamp can be trusted.
struct CountingStore : SimulatedSettingsStore {
    std::optional<FileStamp> Stamp() const override {
        auto stamp = SimulatedSettingsStore::Stamp();
        return stamp ? (stamp->settled = Settled, stamp) : stamp;
    }
    SettingsReading Read() const override {
        ++Readings;
        return SimulatedSettingsStore::Read();
    }
    bool Settled = true;
    mutable int Readings = 0;
};

struct MyIniFileTest : testing::Test {
    CountingStore store;
    MyIniFile file{store, kGbk};
};

TEST_F(MyIniFileTest, BlankNamesAndValuesAreRefused) {
    store.SetContent("[S]\nk=1\n");
    EXPECT_FALSE(file.WriteIniStr(u" ", u"k", u"v"));
    EXPECT_FALSE(file.WriteIniStr(u"S", u"  ", u"v"));
    EXPECT_FALSE(file.WriteIniStr(u"S", u"k", u"   "));
    EXPECT_FALSE(file.WriteIniStr(u"S", u"k", u"a\nb"));
    const TextView keys[] = {u"a", u"k", u"x=y"};
    EXPECT_FALSE(file.WriteIniStr(u"S", keys, u"v"));
    EXPECT_FALSE(file.LastWriteFailed());

    const auto before = store.Stamp()->changed;
    EXPECT_TRUE(file.WriteIniStr(u"S", std::span(keys).first(2), u"v"));
    EXPECT_EQ(store.Read().content, "[S]\nk=v\na=v\n");
    EXPECT_EQ(store.Stamp()->changed, before + 1);
    EXPECT_EQ(file.GetIniStr(u"S", u"  "), u"");
}

TEST_F(MyIniFileTest, AFileThatCannotBeWrittenIsTold) {
    store.Writable = false;
    EXPECT_TRUE(file.WriteIniStr(u"S", u"k", u" v "));
    EXPECT_TRUE(file.LastWriteFailed());
    EXPECT_EQ(file.GetIniStr(u"S", u"k"), u"");
    store.Writable = true;
    EXPECT_TRUE(file.WriteIniStr(u"S", u"k", u" v "));
    EXPECT_FALSE(file.LastWriteFailed());

    store.Readable = store.Writable = false; // a folder in its place, say, and then the file again
    file.WriteIniStr(u"S", u"k", u"w");
    EXPECT_TRUE(file.LastWriteFailed());
    store.Readable = store.Writable = true;
    EXPECT_EQ(file.GetIniStr(u"S", u"k"), u" v ");
    EXPECT_FALSE(file.LastWriteFailed());
}

TEST_F(MyIniFileTest, ReadsTheFileAgainWheneverItCanHaveChanged) {
    store.SetContent("[S]\nk=1\n");
    store.Settled = false;
    EXPECT_EQ(file.GetIniStr(u"S", u"k"), u"1");
    EXPECT_EQ(file.GetIniStr(u"S", u"k"), u"1");
    EXPECT_EQ(store.Readings, 2); // a change within the clock's grain would bear the same stamp
    store.Settled = true;
    const auto snapshot = file.Snapshot();
    EXPECT_EQ(file.GetIniStr(u"S", u"k"), u"1");
    EXPECT_EQ(store.Readings, 3);
    store.SetContent("[S]\nk=2\n");
    EXPECT_EQ(file.GetIniStr(u"S", u"k"), u"2");
    EXPECT_EQ(snapshot->Get(u"S", u"k"), u"1");
    store.Delete();
    EXPECT_EQ(file.GetIniStr(u"S", u"k"), u"");
}

} // namespace
} // namespace tarnex
