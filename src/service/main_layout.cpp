#include "service/main_window.h"
#include "ui/layout_parts.h"

namespace tarnex {

using namespace layout_parts;

namespace {

LayoutNode MainStatus() {
    return Row({Status("mLblTarnexStatus", 10), Field("mTxtStatus", u"就绪", 4, Look::kReadOnly),
                Field("mTxtTarnexCSQ", u"信号强度", 3, Look::kReadOnly),
                Field("mText4", u"巡检次数", 4), Field("mText1", u"丢失次数", 4)});
}

LayoutNode MainMessages() {
    return Row({Check("mChkSMSSendEnable", 'E', u"不选时短信只排队，不发送"),
                Press("mCmdSend", 'T', u"向报警号码发送测试短信"),
                Press("mCmdMail", 'M', u"打开邮件发送窗口"),
                Press("mCmdCore", 'R', u"打开设备连接的测试窗口"), Space(),
                Field("mText5", u"短信已发", 3), Field("mText3", u"发送失败", 3),
                Field("mText2", u"发送丢失", 3)});
}

LayoutNode MainLists() {
    return Sections(
        {Row({ListSection(u"事件", "mList1", 3, 3, {Press("Command3", 'W', u"切换事件列表的宽度")}),
              ListSection(u"短信发送记录", "mList4", 3, 2)},
             1),
         Row({ListSection(u"收到的短信", "mList2", 3, 1),
              ListSection(u"设备状态与链路", "mList3", 3, 1,
                          {Press("mCmdLinkCheck", 'K', u"检查是否有监控程序连接")}),
              ListSection(u"控制链路", "mList5", 3, 1)},
             1),
         Row({ListSection(u"设备调试", "List1", 3, 1,
                          {Press("Command5", 'Q', u"切换设备调试列表的宽度"),
                           Press("Command6", 'L', u"显示或隐藏通信数据列表")}),
              ListSection(u"通信数据", "List2", 3, 1)},
             1)},
        1);
}

LayoutNode MainButtons() {
    return Row({Press("Command1", 'S', u"停止所有定时器，设置刷新和状态显示除外"),
                Press("Command2", 'D', u"打开或关闭调试信息"),
                Press("Command4", 'C', u"清空列表，事件列表除外"), Space(),
                Press("mCMDExit", 'X', u"结束服务")});
}

} // namespace

Layout MainLayout() {
    return {.width = 1000,
            .height = 656,
            .root = Column({MainStatus(), MainMessages(), MainLists(), MainButtons()})};
}

} // namespace tarnex
