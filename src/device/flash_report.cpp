#include "device/flash_report.h"

#include "platform/error_words.h"

#include <array>
#include <cstdio>

namespace tarnex {

namespace {

struct Words {
    const char* english;
    TextView chinese;
};

Words StepWords(FlashStep step) {
    switch (step) {
    case FlashStep::kOpenFile:
        return {"opening the file", u"打开文件"};
    case FlashStep::kOpenPort:
        return {"opening the port", u"打开串口"};
    case FlashStep::kHandshake:
        return {"calling the unit's loader", u"握手"};
    case FlashStep::kErase:
        return {"erasing the unit's program", u"擦除"};
    case FlashStep::kWrite:
        return {"writing", u"写入"};
    case FlashStep::kDone:
        break;
    }
    return {"after the update", u"结束"};
}

Words TroubleWords(HexTrouble trouble) {
    switch (trouble) {
    case HexTrouble::kNoColon:
        return {"does not begin with \":\"", u"不以“:”开头"};
    case HexTrouble::kNotHex:
        return {"holds a character that is no hexadecimal digit", u"含有非十六进制字符"};
    case HexTrouble::kTooShort:
        return {"is too short for a record", u"长度不足一条记录"};
    case HexTrouble::kOddLength:
        return {"ends in half a byte", u"结尾只有半个字节"};
    case HexTrouble::kTooMuchData:
        return {"has more than 115 data bytes, the most that the unit takes", u"数据超过115字节"};
    case HexTrouble::kTruncated:
        return {"has less data than its count says", u"数据少于记录的字节数"};
    case HexTrouble::kSurplus:
        return {"has more data than its count says", u"数据多于记录的字节数"};
    case HexTrouble::kTooMany:
        return {"is one record too many: a unit has 65536 addresses", u"记录太多，超过65536条"};
    case HexTrouble::kNoEndRecord:
        return {"is missing: the file ends without the end record :00000001FF",
                u"缺失：文件没有结束记录:00000001FF"};
    case HexTrouble::kWrongChecksum:
        return {"has a wrong checksum; it is sent all the same", u"校验和错误"};
    case HexTrouble::kOtherType:
        return {"is of a type other than 00; it is sent as data all the same", u"不是数据记录"};
    case HexTrouble::kOverwrites:
        return {"writes an address that an earlier line has written", u"地址重复"};
    case HexTrouble::kWrapsAround:
        break;
    }
    return {"reaches beyond address FFFF", u"超出地址FFFF"};
}

Words PortWords(PortStatus status) {
    switch (status) {
    case PortStatus::kForbidden:
        return {"this user may not open it; the group that owns the device may (dialout)",
                u"没有权限打开串口"};
    case PortStatus::kBusy:
        return {"another program holds it", u"串口被其它程序占用"};
    case PortStatus::kUnusable:
        return {"it cannot be set up as a serial line", u"串口不能使用"};
    case PortStatus::kOk:
    case PortStatus::kAbsent:
    case PortStatus::kClosed:
    case PortStatus::kLost:
        break;
    }
    return {"there is no such port", u"没有这个串口"};
}

std::string Place(const FlashProgress& progress) {
    std::string place = StepWords(progress.step).english;
    if (progress.step == FlashStep::kWrite)
        place += " at address " + ToUtf8(progress.address) + " (line " +
                 std::to_string(progress.line) + " of the file)";
    return place;
}

// "5A A5 00 08"
std::string BytesText(std::string_view bytes) {
    std::string text;
    for (const char byte : bytes) {
        std::array<char, 4> digits{};
        std::snprintf(digits.data(), digits.size(), "%02X", unsigned(std::uint8_t(byte)));
        text += (text.empty() ? "" : " ") + std::string(digits.data());
    }
    return text.empty() ? "nothing" : text;
}

std::string Cause(const FlashProgress& progress) {
    switch (progress.fault) {
    case FlashFault::kNone:
        break;
    case FlashFault::kNoFile:
        return progress.file_trouble;
    case FlashFault::kBadLine:
        return "line " + std::to_string(progress.line) + " of the file " +
               TroubleWords(progress.trouble).english;
    case FlashFault::kNoPort:
        return PortWords(progress.port_status).english;
    case FlashFault::kNoLoader:
        return "the unit did not answer";
    case FlashFault::kSilence:
        return "the unit did not answer within 8 seconds; it had sent " +
               BytesText(progress.answer);
    case FlashFault::kWrongAnswer:
        return "the unit answered " + BytesText(progress.answer) + ", which is no acknowledgement";
    case FlashFault::kLineLost:
        return "the serial adapter was unplugged";
    case FlashFault::kStuckLine:
        return "the serial port does not send what is written to it";
    }
    return "ended";
}

Text CauseInChinese(const FlashProgress& progress) {
    const auto answer = [&] { return FromUtf8(BytesText(progress.answer)); };
    switch (progress.fault) {
    case FlashFault::kNone:
        break;
    case FlashFault::kNoFile:
        return u"不能读取文件：" + InChinese(progress.file_trouble);
    case FlashFault::kBadLine:
        return u"文件第" + ToText(progress.line) + u"行" +
               Text(TroubleWords(progress.trouble).chinese);
    case FlashFault::kNoPort:
        return Text(PortWords(progress.port_status).chinese);
    case FlashFault::kNoLoader:
        return u"设备没有应答";
    case FlashFault::kSilence:
        return progress.answer.empty() ? u"设备8秒内没有应答" : u"设备应答不完整：" + answer();
    case FlashFault::kWrongAnswer:
        return u"设备应答错误：" + answer();
    case FlashFault::kLineLost:
        return u"串口已断开";
    case FlashFault::kStuckLine:
        return u"串口不能发送";
    }
    return u"已中断";
}

bool FileIsToBlame(const FlashProgress& progress) {
    return progress.fault == FlashFault::kNoFile || progress.fault == FlashFault::kBadLine;
}

std::string ForShell(const std::string& word, char quote) {
    constexpr std::string_view kHarmless = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
                                           "0123456789_-+=:,./@%";
    if (word.find_first_not_of(kHarmless) == word.npos)
        return word;
    std::string quoted(1, quote);
    for (const char c : word)
        quoted += c == '\'' && c == quote ? "'\\''" : std::string(1, c);
    return quoted + quote;
}

} // namespace

bool ProgramTouched(const FlashProgress& progress) {
    return progress.step == FlashStep::kErase || progress.step == FlashStep::kWrite;
}

std::string UpdateCommand(const std::string& port, const std::string& file, char quote) {
    return "tarnex-flasher --port " + ForShell(port, quote) + " --file " + ForShell(file, quote);
}

std::vector<Text> FailureInChinese(const FlashProgress& progress, const std::string& command) {
    Text place(StepWords(progress.step).chinese);
    if (progress.step == FlashStep::kWrite)
        place += u"地址" + progress.address;
    std::vector<Text> lines{place + u"：" + CauseInChinese(progress) + u"。"};
    if (ProgramTouched(progress))
        lines.push_back(u"设备程序可能不完整，恢复命令：" + FromUtf8(command));
    else if (!FileIsToBlame(progress))
        lines.push_back(u"设备程序没有改动，可以再次升级。");
    else
        lines.push_back(u"设备程序没有改动。请更换文件。");
    return lines;
}

std::vector<std::string> FailureInEnglish(const FlashProgress& progress,
                                          const std::string& command) {
    std::vector<std::string> lines{Place(progress) + ": " + Cause(progress)};
    if (ProgramTouched(progress)) {
        lines.push_back("The unit's program is incomplete; the unit works no more until an "
                        "update succeeds.");
        lines.push_back("Bring it back: " + command);
        return lines;
    }
    lines.push_back("The unit's program was not touched.");
    if (FileIsToBlame(progress))
        lines.push_back("Take another file.");
    else if (progress.fault == FlashFault::kNoLoader)
        lines.push_back("Check the cable, then switch the unit off and on while the same command "
                        "calls its loader: it listens for some seconds after each start.");
    else
        lines.push_back("The update can be run again, with the same command.");
    return lines;
}

std::string TroubleInEnglish(HexTrouble trouble) {
    return TroubleWords(trouble).english;
}

std::string PortTroubleInEnglish(PortStatus status) {
    return PortWords(status).english;
}

} // namespace tarnex
