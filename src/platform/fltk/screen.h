#pragma once

#include <memory>
#include <string>

namespace tarnex {

// The connection of FLTK to the X server. One a process: FLTK knows no other.
class Screen {
  public:
    // nullptr, and in trouble why, when there is no X server that lets us in.
    static std::unique_ptr<Screen> Open(std::string& trouble);
    ~Screen();
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    // Readable when the X server has something to say.
    int Descriptor() const;
    // 1 at 96 dpi, from the resource Xft.dpi that desktops set.
    double Scale() const;
    // Handles everything that has arrived and is due, and draws what has changed.
    void Check();
    // The X server is gone: no FLTK function may be called any more.
    bool Lost() const { return lost_; }

  private:
    Screen() = default;
    static void EndLoops(void* screen);

    bool lost_ = false;
    int turns_after_loss_ = 0;
};

} // namespace tarnex
