#include "ui/layouts.h"

#include "ui/layout_parts.h"
#include "ui/tool_layouts.h"

#include <cassert>

namespace tarnex {

namespace {

using namespace layout_parts;

LayoutNode MainStatus() {
    return Row({Status("mLblTarnexStatus", 10), Field("mTxtStatus", u"就绪", 4, Look::kReadOnly),
                Field("mTxtTarnexCSQ", u"信号强度", 3, Look::kReadOnly),
                Field("mText4", u"巡检次数", 5), Field("mText1", u"丢失次数", 4)});
}

LayoutNode MainMessages() {
    return Row({Check("mChkSMSSendEnable", 'E', u"不选时短信只排队，不发送"),
                Press("mCmdSend", 'T', u"向报警号码发送测试短信"),
                Press("mCmdMail", 'M', u"打开邮件发送窗口"),
                Press("mCmdCore", 'R', u"打开设备连接的测试窗口"), Space(),
                Field("mText5", u"短信已发", 5), Field("mText3", u"发送失败", 4),
                Field("mText2", u"发送丢失", 4)});
}

LayoutNode MainLists() {
    return Sections(
        {Row({ListSection(u"事件", "mList1", 4, 3, {Press("Command3", 'W', u"切换事件列表的宽度")}),
              ListSection(u"短信发送记录", "mList4", 4, 2)},
             1),
         Row({ListSection(u"收到的短信", "mList2", 3, 1),
              ListSection(u"设备状态与链路", "mList3", 3, 1,
                          {Press("mCmdLinkCheck", 'K', u"检查是否有监控程序连接")}),
              ListSection(u"控制链路", "mList5", 3, 1)},
             1),
         Row({ListSection(u"设备调试", "List1", 4, 1,
                          {Press("Command5", 'Q', u"切换设备调试列表的宽度"),
                           Press("Command6", 'L', u"显示或隐藏通信数据列表")}),
              ListSection(u"通信数据", "List2", 4, 1)},
             1)},
        1);
}

LayoutNode MainButtons() {
    return Row({Press("Command1", 'S', u"停止所有定时器，设置刷新和状态显示除外"),
                Press("Command2", 'D', u"打开或关闭调试信息"),
                Press("Command4", 'C', u"清空列表，事件列表除外"), Space(),
                Press("mCMDExit", 'X', u"结束服务")});
}

Layout MainWindowLayout() {
    return {.width = 1000,
            .height = 656,
            .root = Column({MainStatus(), MainMessages(), MainLists(), MainButtons()})};
}

// Titles one below the other line up.
LayoutNode MailField(std::string box, Text title, Look look = Look::kPlain) {
    LayoutNode field = Field(std::move(box), std::move(title), 16, look);
    field.title_ems = 5;
    return field;
}

LayoutNode MailBody(std::string box, Text title, int lines, Look look = Look::kMultiLine) {
    LayoutNode body = MailField(std::move(box), std::move(title), look);
    body.lines = lines;
    body.weight = lines;
    return body;
}

Layout MailLayout() {
    LayoutNode note = MailBody("txtMessage", u"附注(不发)", 2);
    note.hint = u"只写在这里，不会写入任何邮件";
    LayoutNode problem = MailBody("Problem", u"失败原因", 2, Look::kReadOnlyLines);
    problem.weight = 0;
    return {
        .width = 600,
        .height = 520,
        .root = Column(
            {Row({Status("StatusTxt", 12), Field("Text1", u"等待计数", 4, Look::kReadOnly)}),
             std::move(problem), MailField("txtserver", u"服务器"), MailField("txtfrom", u"发件人"),
             MailField("getaddress", u"收件人"), MailField("user", u"用户名"),
             MailField("txtpwa", u"密码", Look::kSecret), MailField("subject", u"主题"),
             MailBody("TxtMessage1", u"正文", 4), std::move(note),
             Row({Press("CmdSend", 'S', u"按以上内容立即发送"),
                  Press("Command1", 'T', u"把一条测试文本放入发送队列"), Space(),
                  Press("cmdExit", 'X', u"关闭窗口并停止发送邮件")})})};
}

Layout CoreLayout() {
    return {.width = 480,
            .height = 360,
            .root = Column(
                {{.kind = Kind::kGrid,
                  .children =
                      {Press("CMDCSQ", 'Q', u"开始或停止每秒查询一次信号强度"),
                       Press("CMDRDNO", 'N', u"读第一报警电话"),
                       Press("CMDRDCSCA", 'C', u"读短消息中心"),
                       Press("CMDGetComFifo", 'F', u"取走设备主动发来的一条消息，服务不会再看到它"),
                       Press("CMDSendSMS1", '1', u"发出短信：把测试短信发到第一报警电话"),
                       Press("CMDSendSMS2", '2', u"发出短信：把测试短信发到第二报警电话"),
                       Press("CMDSMSSendChk", 'K', u"取走短信发送结果，服务不会再看到它"),
                       Press("CMDInit", 'I', u"清除连接状态，不影响已打开的串口"),
                       Press("CMDDebugOn", 'D', u"打开设备调试信息"),
                       Press("CMDDebugOff", 'O', u"关闭设备调试信息"),
                       Careful(Press("CMDReset", 'R', u"重新启动设备，服务随后重新寻找它")),
                       Careful(Press("CMDFirmware", 'U',
                                     u"改写设备程序：先擦除再写入当前目录的Tarnex_20050626.hex，"
                                     u"不可中断"))},
                  .columns = 4},
                 ListSection(u"结果", "Results", 5, 1)})};
}

struct NamedLayout {
    std::string_view form;
    Layout (*layout)();
};

constexpr NamedLayout kLayouts[] = {
    {"TarnexComm", MainWindowLayout},   {"MailSender", MailLayout},  {"TarnexCore", CoreLayout},
    {"FirmwareFlasher", FlasherLayout}, {"OCXDebug", ConsoleLayout},
};

} // namespace

Layout LayoutOf(const Form& form) {
    for (const NamedLayout& entry : kLayouts)
        if (entry.form == form.Name())
            return entry.layout();
    assert(false);
    return {};
}

} // namespace tarnex
