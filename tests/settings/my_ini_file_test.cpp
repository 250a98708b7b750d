#include "adapters/system/system_code_page.h"
#include "settings/my_ini_file.h"
#include "simulator/simulated_stores.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

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
    const SystemCodePage gbk{"GBK"};
    CountingStore store;
    MyIniFile file{store, gbk};
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
