#include "adapters/fltk/fltk_file_dialog.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include <FL/Fl_Double_Window.H>
#include <FL/Fl_File_Input.H>
#include <FL/fl_ask.H>

namespace tarnex {

namespace {

void SpeakChinese() {
    using F = Fl_File_Chooser;
    F::add_favorites_label = "加入收藏夹";
    F::all_files_label = "所有文件 (*)";
    F::custom_filter_label = "其他类型";
    F::existing_file_label = "请选择已有的文件。";
    F::favorites_label = "收藏夹";
    F::filename_label = "文件名：";
    F::filesystems_label = "文件系统";
    F::hidden_label = "显示隐藏文件";
    F::manage_favorites_label = "整理收藏夹";
    F::preview_label = "预览";
    F::show_label = "类型：";
    fl_ok = "确定";
    fl_cancel = "取消";
    fl_close = "关闭";
    fl_message_title_default("提示");
}

// "*.hex|*.HEX" as FLTK writes it. It matches names in any case, so one pattern is enough, and an
// operator need not see the braces that several would stand in.
std::string Pattern(const Text& filter) {
    return "固件文件 (" + ToUtf8(filter.substr(0, filter.find(u'|'))) + ")";
}

// FLTK has laid its dialog out for letters of one size.
void Enlarge(Fl_Group& group, double scale) {
    const auto scaled = [scale](int pixels) { return int(std::lround(pixels * scale)); };
    for (int i = 0; i < group.children(); ++i) {
        Fl_Widget& child = *group.child(i);
        child.Fl_Widget::resize(scaled(child.x()), scaled(child.y()), scaled(child.w()),
                                scaled(child.h()));
        if (Fl_Group* const inner = child.as_group())
            Enlarge(*inner, scale);
    }
    group.init_sizes();
}

Fl_File_Input* FindInput(const Fl_Group& group) {
    for (int i = 0; i < group.children(); ++i) {
        if (auto* const input = dynamic_cast<Fl_File_Input*>(group.child(i)))
            return input;
        if (const Fl_Group* const inner = group.child(i)->as_group())
            if (Fl_File_Input* const input = FindInput(*inner))
                return input;
    }
    return nullptr;
}

// FLTK takes a lone "/" for a folder without a name and deletes it: no path could be typed that
// begins so.
void LetPathsBegin(Fl_File_Input& input) {
    static Fl_Callback* of_the_dialog = nullptr;
    of_the_dialog = input.callback();
    input.callback([](Fl_Widget* widget, void* data) {
        if (std::string_view(static_cast<Fl_File_Input*>(widget)->value()) != "/")
            of_the_dialog(widget, data);
    });
}

} // namespace

void FltkFileDialog::Show(const Text& filter, std::function<void(const std::string&)> chosen) {
    SpeakChinese();
    chosen_ = std::move(chosen);
    chooser_ = std::make_unique<Fl_File_Chooser>(".", Pattern(filter).c_str(),
                                                 Fl_File_Chooser::SINGLE, "打开固件文件");
    chooser_->newButton->hide();
    chooser_->preview(0); // a HEX file has nothing to look at
    chooser_->previewButton->hide();
    Fl_Window& window = *chooser_->newButton->window();
    if (Fl_File_Input* const input = FindInput(window))
        LetPathsBegin(*input);
    Enlarge(window, scale_);
    window.Fl_Widget::resize(window.x(), window.y(), int(window.w() * scale_),
                             int(window.h() * scale_));
    chooser_->show();
}

void FltkFileDialog::TakeAnswer() {
    if (!chooser_ || chooser_->shown())
        return;
    const char* const path = chooser_->value();
    const std::string answer = path ? path : "";
    chooser_.reset();
    chosen_(answer);
}

} // namespace tarnex
