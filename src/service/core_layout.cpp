#include "service/core_window.h"
#include "ui/layout_parts.h"

namespace tarnex {

using namespace layout_parts;

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

} // namespace tarnex
