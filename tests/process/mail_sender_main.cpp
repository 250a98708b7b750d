// Mails the texts of the command line by the settings of a file, on the real loop, until a server
// has confirmed them all: mail_sender_driver SETTINGS_FILE TEXT...

#include "adapters/asio/asio_loop.h"
#include "adapters/asio/asio_tcp_client.h"
#include "adapters/system/file_settings_store.h"
#include "adapters/system/iconv_code_page.h"
#include "mail/mail_sender.h"

#include <cstdio>

namespace tarnex {
namespace {

constexpr Duration kLookAgain = 50ms;

int Run(const char* settings_file, const std::vector<std::string>& texts) {
    AsioLoop loop;
    AsioTcpClients tcp(loop);
    IconvCodePage code_page("GBK");
    FileSettingsStore store(settings_file);
    MyIniFile ini(store, code_page);
    OperatorNotices notices(
        [](const std::string& line) { std::fprintf(stderr, "%s\n", line.c_str()); });
    MailSender mail(loop, tcp, ini, code_page, notices);
    for (const std::string& text : texts)
        mail.dSetEmailFifo(FromUtf8(text));

    std::function<void()> look = [&] {
        const MailStatus status = mail.Status();
        if (status.sent >= texts.size() && status.step == int(SmtpStep::kQuit))
            loop.Stop();
        else
            loop.CallAfter(kLookAgain, look);
    };
    look();
    loop.Run();
    std::printf("sent %lu, failed attempts %lu\n", mail.Status().sent,
                mail.Status().failed_attempts);
    return 0;
}

} // namespace
} // namespace tarnex

int main(int argc, char** argv) {
    return argc < 3 ? 64 : tarnex::Run(argv[1], {argv + 2, argv + argc});
}
