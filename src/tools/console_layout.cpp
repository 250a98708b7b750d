#include "tools/ocx_debug.h"
#include "ui/layout_parts.h"

#include <algorithm>

namespace tarnex {

using namespace layout_parts;

namespace {

// What buttons of the console say when the pointer rests on them. Those without words only read.
struct CommandHint {
    int number;
    TextView hint;
};
// clang-format off
constexpr CommandHint kHints[] = {
    { 5, u"重新启动设备"},
    { 7, u"写入设备：第一报警电话"},
    { 8, u"写入设备：第二报警电话"},
    { 9, u"写入设备：短消息中心"},
    {10, u"在设备的显示屏第一行显示文字"},
    {11, u"在设备的显示屏第二行显示文字"},
    {12, u"写入设备：通讯报警时间1分钟"},
    {13, u"写入设备：通讯报警时间3分钟"},
    {14, u"把显示屏交还设备"},
    {16, u"写入设备：报警次数1"},
    {17, u"写入设备：报警次数2"},
    {19, u"写入设备：实际打开的是电源报警"},
    {20, u"写入设备：关闭电源报警"},
    {21, u"写入设备：实际打开的是通讯报警"},
    {22, u"写入设备：关闭通讯报警"},
    {25, u"发出短信：把测试短信发到第一报警电话"},
    {26, u"发出短信：把测试短信发到第二报警电话"},
    {28, u"取出设备主动发来的一条消息"},
    {29, u"连续执行：全部初始化，再向第一报警发信并等待结果"},
    {30, u"连续执行：写显示屏、电话号码、短消息中心、报警时间和次数，发出PC报警，关闭通讯报警"},
    {31, u"发出报警：设备立即报警"},
    {32, u"解除设备的PC报警"},
    {33, u"连续执行：关闭电源报警和通讯报警，设备不再自行报警"},
    {35, u"写入设备：设备名称"},
    {37, u"写入设备：使用设备名称"},
    {38, u"写入设备：不使用设备名称"},
    {39, u"问候设备"},
    {41, u"改写设备程序：先擦除再写入当前目录的Tarnex_20050626.hex，不可中断"},
    {44, u"覆盖所有文本框并保存，不写入设备"},
    {45, u"写入设备：序列号的末四位先加一"},
};
// clang-format on

// A button of the console.
LayoutNode Command(int number, char key = 0, Text hint = u"") {
    if (const auto* const found = std::ranges::find(kHints, number, &CommandHint::number);
        found != std::end(kHints))
        hint = found->hint;
    return Press("Command" + std::to_string(number), key, std::move(hint));
}

Nodes Commands(std::initializer_list<int> numbers) {
    Nodes buttons;
    for (const int number : numbers)
        buttons.push_back(Command(number));
    return buttons;
}

LayoutNode Grid(int columns, Nodes cells) {
    return {.kind = Kind::kGrid, .children = std::move(cells), .columns = columns, .gap = 3};
}

// Side by side, each as wide as it needs, sharing what is left.
LayoutNode Line(Nodes cells) {
    for (LayoutNode& cell : cells)
        cell.weight = cell.control.empty() ? 0 : 1;
    LayoutNode line = Row(std::move(cells));
    line.gap = 3;
    return line;
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
    return Line({Command(1, 'C', u"连接或断开设备"), Command(39),
                 Command(43, 'D', u"显示或隐藏设备调试信息"), Command(44),
                 Command(6, 'X', u"结束程序")});
}

LayoutNode NumberGroup() {
    return Grid(3, {Box("Text1", u"第一报警电话"), Box("Text2", u"第二报警电话"),
                    Box("Text3", u"短消息中心"), Command(2), Command(3), Command(4), Command(7),
                    Command(8), Command(9)});
}

LayoutNode SmsGroup() {
    LayoutNode group = Column({Box("Text5", u"测试短信的内容"), Grid(3, Commands({25, 26, 27}))});
    group.gap = 3;
    return group;
}

LayoutNode AlarmGroup() {
    Nodes cells = Commands({15, 12, 13, 23, 18, 16, 17, 21, 20, 19, 22});
    cells.insert(cells.begin() + 7, Space()); // so that switches of the alarms share a row
    return Grid(4, std::move(cells));
}

LayoutNode DisplayGroup() {
    Nodes cells = Commands({10, 11, 14});
    cells.push_back(Heading(u"PC报警"));
    for (LayoutNode& button : Commands({31, 32}))
        cells.push_back(std::move(button));
    return Line(std::move(cells));
}

LayoutNode NameGroup() {
    return Grid(3, {Box("Text4", u"设备名称"), Command(34), Command(35), Command(37), Command(38),
                    Command(40)});
}

LayoutNode UnitGroup() {
    return Grid(3, {Box("Text7", u"序列号"), Command(24), Command(45), Command(42), Command(36),
                    Command(28)});
}

LayoutNode CarefulGroup() {
    Nodes buttons = Commands({5, 33, 30, 29, 41});
    for (LayoutNode& button : buttons)
        button = Careful(std::move(button));
    return Line(std::move(buttons));
}

LayoutNode ConsoleCommands() {
    LayoutNode groups = Column({Group(u"连接", LinkGroup()), Group(u"电话号码", NumberGroup()),
                                Group(u"短消息", SmsGroup()), Group(u"报警", AlarmGroup()),
                                Group(u"显示屏", DisplayGroup()), Group(u"设备名称", NameGroup()),
                                Group(u"设备信息", UnitGroup()), Group(u"慎用", CarefulGroup())});
    groups.gap = 5;
    return groups;
}

// Answers stand beside the commands and not below, so that the lowest screen shows them. What the
// address and the debug lists need comes from the other lists: no button moves for them.
LayoutNode ConsoleLists() {
    constexpr int kLines = 3;
    return Sections({Row({AddressField("Text6"), Space()}),
                     ListSection(u"操作记录", "List1", kLines, 3),
                     ListSection(u"收到的短信", "List2", kLines, 2),
                     ListSection(u"设备调试", "DebugList", kLines, 3),
                     ListSection(u"通信数据", "TrafficList", kLines, 3)},
                    1);
}

} // namespace

Layout ConsoleLayout() {
    LayoutNode root = Row({ConsoleCommands(), ConsoleLists()});
    root.gap = 12;
    return {.width = 661, .height = 656, .root = std::move(root)};
}

} // namespace tarnex
