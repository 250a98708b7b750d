#include "tools/firmware_flasher.h"
#include "ui/layout_parts.h"

namespace tarnex {

using namespace layout_parts;

Layout FlasherLayout() {
    const LayoutNode figures = {.kind = Kind::kLabel, .control = "Figures", .weight = 1, .ems = 18};
    return {.width = 620,
            .height = 440,
            .root = Column({ListSection(u"升级记录", "List1", 8, 1),
                            Row({Field("Text1", u"写入地址", 4, Look::kReadOnly), figures}),
                            Row({Press("Command1", 'O', u"选择固件文件，连接或断开设备"),
                                 Press("Command41", 'U', u"把固件写入设备"),
                                 Press("OtherFile", 'F', u"升级之前换一个固件文件"),
                                 Press("Rescue", 'R', u"设备不完整、连接不上时重新写入"), Space(),
                                 Press("Command6", 'X', u"结束程序")})})};
}

} // namespace tarnex
