#include "ui/tool_layouts.h"

#include "ui/layout_parts.h"

namespace tarnex {

namespace {

using namespace layout_parts;

// A button of the console.
LayoutNode Command(int number) {
    return Press("Command" + std::to_string(number), 0, u"");
}

Nodes Commands(std::initializer_list<int> numbers) {
    Nodes buttons;
    for (const int number : numbers)
        buttons.push_back(Command(number));
    return buttons;
}

LayoutNode Grid(int columns, Nodes cells) {
    return {.kind = Kind::kGrid, .children = std::move(cells), .columns = columns, .gap = 4};
}

// A text box without a title, since the buttons next to it say what it is for.
LayoutNode Box(std::string box, Text hint) {
    LayoutNode field = Field(std::move(box), u"", 6);
    field.weight = 1;
    field.hint = std::move(hint);
    return field;
}

// What belongs to one subject, on the right of its name.
LayoutNode Group(Text subject, LayoutNode content) {
    LayoutNode heading = Heading(std::move(subject));
    heading.ems = 5;
    content.weight = 1;
    return Row({Column({std::move(heading)}), std::move(content)});
}

LayoutNode AddressField(std::string box) {
    return Field(std::move(box), u"写入地址", 4, Look::kReadOnly);
}

LayoutNode LinkGroup() {
    return Grid(4, {Press("Command1", 'C', u"连接或断开设备"), Command(39),
                    Press("Command43", 'D', u"显示或隐藏设备调试信息"),
                    Press("Command6", 'X', u"结束程序")});
}

LayoutNode NumberGroup() {
    return Grid(3, {Box("Text1", u"第一报警电话"), Box("Text2", u"第二报警电话"),
                    Box("Text3", u"短消息中心"), Command(2), Command(3), Command(4), Command(7),
                    Command(8), Command(9)});
}

LayoutNode SmsGroup() {
    return Column({Box("Text5", u"测试短信的内容"), Grid(3, Commands({25, 26, 27}))});
}

LayoutNode AlarmGroup() {
    return Grid(4, Commands({15, 12, 13, 23, 18, 16, 17, 33, 21, 20, 19, 22, 31, 32}));
}

LayoutNode NameGroup() {
    return Grid(3, {Box("Text4", u"设备名称"), Command(34), Command(35), Command(37), Command(38),
                    Command(40)});
}

LayoutNode UnitGroup() {
    return Grid(3, {Box("Text7", u"序列号"), Command(24), Command(45), Command(42), Command(36),
                    Command(28), Command(5)});
}

LayoutNode TestGroup() {
    return Column({Grid(4, Commands({44, 30, 29, 41})), Row({AddressField("Text6"), Space()})});
}

LayoutNode ConsoleCommands() {
    LayoutNode groups =
        Column({Group(u"连接", LinkGroup()), Group(u"电话号码", NumberGroup()),
                Group(u"短消息", SmsGroup()), Group(u"报警", AlarmGroup()),
                Group(u"显示屏", Grid(3, Commands({10, 11, 14}))), Group(u"设备名称", NameGroup()),
                Group(u"设备信息", UnitGroup()), Group(u"综合测试", TestGroup())});
    groups.gap = 8;
    return groups;
}

LayoutNode ConsoleLists() {
    return Row({ListSection(u"操作记录", "List1", 4, 3), ListSection(u"收到的短信", "List2", 4, 2)},
               1);
}

} // namespace

Layout FlasherLayout() {
    return {.width = 620,
            .height = 440,
            .root = Column({ListSection(u"升级记录", "List1", 8, 1),
                            Row({Press("Command1", 'O', u"选择固件文件，连接或断开设备"),
                                 Press("Command41", 'U', u"把固件写入设备"), AddressField("Text1"),
                                 Space(), Press("Command6", 'X', u"结束程序")})})};
}

// Debug output stands on the right, in what the window is widened by for it.
Layout ConsoleLayout() {
    constexpr int kAllThatIsSpare = 1000;
    LayoutNode root = Row({Column({ConsoleCommands(), ConsoleLists()}, 1),
                           Sections({ListSection(u"设备调试", "DebugList", 4, 1),
                                     ListSection(u"通信数据", "TrafficList", 4, 1)},
                                    kAllThatIsSpare)});
    root.gap = 12;
    return {.width = 661, .height = 900, .root = std::move(root)};
}

} // namespace tarnex
