#include "service/main_window.h"

namespace tarnex {

std::string EchoLine(const std::string& list, TextView line) {
    return list + ": " + ToUtf8(EscapeControls(line)) + "\n";
}

MainWindow::MainWindow(Echo echo, std::function<bool()> seen)
    : Form("TarnexComm", u"TarnexComm"), echo_(std::move(echo)), seen_(std::move(seen)) {
    for (TextBox* count : {&mText1, &mText2, &mText3, &mText4, &mText5})
        count->SetValue(u"0");
}

void MainWindow::AddLine(List list, const Text& line) {
    ListBox* const boxes[kLists] = {&List1, &List2, &mList1, &mList2, &mList3, &mList4, &mList5};
    ListBox& box = *boxes[std::size_t(list)];
    const bool seen = seen_ && seen_();
    box.KeepAtMost(seen ? ListBox::kEveryLine : ListBox::kLinesUnseen);
    box.Add(line);
    if (!seen && echo_)
        echo_(box.Name(), line);
}

void MainWindow::ShowTotal(Total total, unsigned long count) {
    TextBox* const boxes[kTotals] = {&mText1, &mText4, &mText5, &mText3, &mText2};
    boxes[std::size_t(total)]->SetValue(ToText((long long)(count)));
}

} // namespace tarnex
