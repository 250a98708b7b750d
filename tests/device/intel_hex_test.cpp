#include "device/firmware_frames.h"
#include "device/intel_hex.h"
#include "simulator/simulated_stores.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

using namespace std::string_view_literals;

std::string Line(std::size_t count, std::size_t data_bytes) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string line = {':', kDigits[count / 16], kDigits[count % 16]};
    line += "010000";
    for (std::size_t i = 0; i < data_bytes; ++i)
        line += "FF";
    return line + "00";
}

TEST(IntelHex, TellsEveryKindOfLineApart) {
    using enum HexTrouble;
    const std::pair<std::string, HexTrouble> rows[] = {{"\r", kTooShort},
                                                       {":000000010", kTooShort},
                                                       {" :00000001FF", kNoColon},
                                                       {":00000001FF ", kNotHex},
                                                       {":0100000055AG", kNotHex},
                                                       {":00000001FF\r\r", kNotHex},
                                                       {":010000005AA", kOddLength},
                                                       {":0200000055A9", kTruncated},
                                                       {":010000005555A9", kSurplus},
                                                       {Line(116, 116), kTooMuchData},
                                                       {Line(1, 500), kTooMuchData}};
    for (const auto& [line, trouble] : rows)
        EXPECT_EQ(std::get<HexTrouble>(ParseHexLine(line)), trouble) << line;
    EXPECT_TRUE(std::holds_alternative<HexRecord>(ParseHexLine(Line(115, 115))));
    EXPECT_TRUE(std::holds_alternative<HexEnd>(ParseHexLine(":00000001FF")));
    EXPECT_TRUE(std::holds_alternative<HexEnd>(ParseHexLine(":00000001FF\r")));
    EXPECT_EQ(std::get<HexRecord>(ParseHexLine(":00000001ff")).type, 1);

    const HexRecord record = std::get<HexRecord>(ParseHexLine(":0312ab000A0bFF2A\r"));
    EXPECT_EQ(record.address, "12ab");
    EXPECT_EQ(record.data, "\x0A\x0B\xFF");
    EXPECT_EQ(record.type, 0);
    EXPECT_FALSE(record.checksum_holds);
    EXPECT_TRUE(std::get<HexRecord>(ParseHexLine(":0312AB000A0BFF2C")).checksum_holds);
}

TEST(HexSummary, SumsUpAFileAndListsWhatIsOddAboutIt) {
    SimulatedLineFiles files;
    files.Files["good"] = ":020100000102FA\r\n:01FFFF00FF02\n:00000001FF\nanything\n";
    files.Files["odd"] = ":020100000102FA\n"
                         ":01010100AA53\n"   // address 0101 again
                         ":01000000AA00\n"   // checksum
                         ":020000040001F9\n" // another type, which starts at address 0 again
                         ":02FFFF0001FE\n"   // too short
                         ":02FFFF000102FD\n" // beyond FFFF
                         "\n";
    const HexSummary good = HexSummary::Read(**files.Open("good"));
    EXPECT_FALSE(good.Fault());
    EXPECT_EQ(good.OddCount(), 0);
    EXPECT_EQ(good.Records(), 2);
    EXPECT_EQ(good.Bytes(), 3);
    EXPECT_EQ(good.LowestAddress(), 0x0100);
    EXPECT_EQ(good.HighestAddress(), 0xFFFF);

    const HexSummary odd = HexSummary::Read(**files.Open("odd"));
    EXPECT_EQ(odd.Fault().value().line, 5); // the others are sent all the same
    using Found = std::vector<std::pair<long, HexTrouble>>;
    Found found;
    for (const OddHexLine& line : odd.OddLines())
        found.emplace_back(line.line, line.trouble);
    using enum HexTrouble;
    EXPECT_EQ(found, (Found{{2, kOverwrites},
                            {3, kWrongChecksum},
                            {4, kOtherType},
                            {4, kOverwrites},
                            {5, kTruncated},
                            {6, kWrapsAround},
                            {7, kTooShort},
                            {8, kNoEndRecord}}));
}

TEST(HexSummary, ListsNoMoreThanItsShareOfAFileFullOfFaults) {
    SimulatedLineFiles files;
    for (int line = 0; line < 2000; ++line)
        files.Files["noise"] += ":0000000000\n:0000000001\n"; // every second checksum is wrong
    const HexSummary noise = HexSummary::Read(**files.Open("noise"));
    EXPECT_EQ(noise.OddLines().size(), HexSummary::kMostListed);
    EXPECT_EQ(noise.OddCount(), 2001);
    EXPECT_EQ(noise.Fault().value().line, 4001);

    for (long line = 0; line <= HexSummary::kMostRecords; ++line)
        files.Files["long"] += ":0000000000\n";
    HexSummary too_long = HexSummary::Read(**files.Open("long"));
    EXPECT_EQ(too_long.Fault().value().line, HexSummary::kMostRecords + 1);
    EXPECT_TRUE(too_long.TakeProgram().empty());
}

TEST(FirmwareFrames, HoldUpTo115BytesUnderAnAddressInEitherCase) {
    EXPECT_EQ(CommandFrame(FirmwareCommand::kB1), "\x5A\xA5\x00\x08\xB1\x01\xB8\x16"sv);
    EXPECT_EQ(DataFrame({.address = "1aF0", .data = "\x01\xFE"}),
              "\x5A\xA5\x00\x10\xB3\x00\x00\x1A\xF0\x00\x02\x01\xFE\x03\xCD\x16"sv);
    const std::string most = DataFrame({.address = "FFFF", .data = std::string(115, '\xFF')});
    EXPECT_EQ(most.size(), 129u);
    EXPECT_EQ(most.substr(0, 11), "\x5A\xA5\x00\x81\xB3\x00\x00\xFF\xFF\x00\x73"sv);
}

} // namespace
} // namespace tarnex
