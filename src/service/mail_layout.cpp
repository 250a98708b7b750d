#include "service/mail_window.h"
#include "ui/layout_parts.h"

namespace tarnex {

using namespace layout_parts;

namespace {

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

} // namespace

Layout MailLayout() {
    LayoutNode note = MailBody("txtMessage", u"附注(不发)", 1);
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
             MailBody("TxtMessage1", u"正文", 3), std::move(note),
             Row({Press("CmdSend", 'S', u"按以上内容立即发送"),
                  Press("Command1", 'T', u"把一条测试文本放入发送队列"), Space(),
                  Press("cmdExit", 'X', u"关闭窗口并停止发送邮件")})})};
}

} // namespace tarnex
