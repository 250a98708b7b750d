#include "adapters/fltk/fltk_view.h"

#include "adapters/fltk/fltk_window.h"
#include "adapters/fltk/style.h"

#include <cstdlib>

#include <FL/Fl.H>
#include <sys/socket.h>

namespace tarnex {

namespace {

constexpr double kForever = 1e20; // seconds

} // namespace

FltkView::FltkView(int socket, double scale, LayoutOf layout_of)
    : socket_(socket), metrics_(Metrics(scale)), layout_of_(std::move(layout_of)),
      file_dialog_(scale),
      copies_(
          [this](Form& copy) {
              return std::make_unique<FltkWindow>(copy, layout_of_(copy), metrics_);
          },
          file_dialog_, [socket](const std::string& packet) { Send(socket, packet); }) {
    Fl::add_fd(
        socket_, FL_READ, [](FL_SOCKET, void* self) { static_cast<FltkView*>(self)->Receive(); },
        this);
}

void FltkView::Send(int socket, const std::string& packet) {
    (void)!send(socket, packet.data(), packet.size(), MSG_NOSIGNAL);
}

// Perhaps in a loop that a menu or a message of the file dialog runs: what has arrived waits until
// its windows are not in use.
void FltkView::Receive() {
    const ssize_t size = recv(socket_, nullptr, 0, MSG_PEEK | MSG_TRUNC | MSG_DONTWAIT);
    if (size == 0)
        std::_Exit(EXIT_SUCCESS); // nothing here is worth keeping
    if (size < 0)
        return;
    std::string packet(std::size_t(size), '\0');
    recv(socket_, packet.data(), packet.size(), MSG_DONTWAIT);
    arrived_.push_back(std::move(packet));
}

void FltkView::Run() {
    Send(socket_, WireWriter(ViewRecord::kReady).Bytes());
    while (true) {
        Fl::wait(kForever);
        file_dialog_.TakeAnswer();
        for (; !arrived_.empty(); arrived_.pop_front()) {
            copies_.Apply(arrived_.front());
            Fl::flush();
            Send(socket_, WireWriter(ViewRecord::kSeen).Bytes());
        }
    }
}

} // namespace tarnex
