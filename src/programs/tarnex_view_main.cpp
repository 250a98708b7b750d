// tarnex-view: shows the windows of the program that has started it, which is at the other end of
// descriptor 3, and ends with it.

#include "adapters/fltk/fltk_view.h"
#include "adapters/fltk/screen.h"
#include "adapters/fltk/style.h"
#include "platform/exit_status.h"
#include "programs/form_layouts.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include <sys/prctl.h>
#include <sys/socket.h>

namespace tarnex {
namespace {

constexpr int kSocket = 3;

void Tell(ViewRecord record, std::string_view text) {
    WireWriter packet(record);
    packet.String(text);
    FltkView::Send(kSocket, packet.Bytes());
}

// A packet socket to a program that still runs.
bool SomebodyIsThere() {
    int type = 0;
    socklen_t size = sizeof type;
    char byte = 0;
    return getsockopt(kSocket, SOL_SOCKET, SO_TYPE, &type, &size) == 0 && type == SOCK_SEQPACKET &&
           recv(kSocket, &byte, 1, MSG_PEEK | MSG_DONTWAIT) != 0;
}

int Run(std::string_view version) {
    if (version != TARNEX_VERSION) {
        Tell(ViewRecord::kTrouble, "tarnex-view belongs to another version of the program");
        return kExitUnavailable;
    }
    const auto lost = [] {
        Tell(ViewRecord::kTrouble, "the display is gone");
        std::_Exit(kExitUnavailable);
    };
    if (const std::string trouble = OpenScreen(lost); !trouble.empty()) {
        Tell(ViewRecord::kTrouble, trouble);
        return kExitUnavailable;
    }
    const double scale = ScreenScale();
    if (const std::string warning = SetUpStyle(scale); !warning.empty())
        Tell(ViewRecord::kNotice, warning);
    FltkView(kSocket, scale, LayoutOf).Run();
    return kExitDone;
}

} // namespace
} // namespace tarnex

int main(int argc, char** argv) {
    // The program ends this one: even while it hangs, and however that program ends.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    // What the terminal sends is the program's to act on.
    for (const int signal : {SIGINT, SIGQUIT, SIGHUP})
        std::signal(signal, SIG_IGN);
    if (argc != 2 || !tarnex::SomebodyIsThere()) {
        std::fputs(
            "tarnex-view: the other programs of TarnexComm start this one for their windows\n",
            stderr);
        return tarnex::kExitUsage;
    }
    return tarnex::Run(argv[1]);
}
