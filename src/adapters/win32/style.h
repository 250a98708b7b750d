#pragma once

#include "adapters/windows/windows_headers.h"
#include "ui/layout.h"

#include <memory>

namespace tarnex {

// Fonts and measures for a screen of one density.
class Style {
  public:
    // dpi: 96 for a plain screen.
    explicit Style(UINT dpi);
    Style(const Style&) = delete;
    Style& operator=(const Style&) = delete;

    const ScreenMetrics& Metrics() const { return metrics_; }
    UINT Dpi() const { return dpi_; }
    HFONT Plain() const { return plain_.get(); }
    HFONT Bold() const { return bold_.get(); }      // of headings
    HFONT Strong() const { return strong_.get(); }  // larger too
    int TextHeight() const { return text_height_; } // pixels, of plain letters
    int LineHeight() const { return line_height_; } // pixels, of a line of a list

  private:
    template <class Handle>
    struct Deleter {
        using pointer = Handle;
        void operator()(Handle object) const { DeleteObject(object); }
    };
    struct ContextDeleter {
        using pointer = HDC;
        void operator()(HDC context) const { DeleteDC(context); }
    };
    using Font = std::unique_ptr<HFONT, Deleter<HFONT>>;

    UINT dpi_;
    Font plain_;
    Font bold_;
    Font strong_;
    std::unique_ptr<HDC, ContextDeleter> measuring_; // with the plain font in it
    ScreenMetrics metrics_;
    int text_height_ = 0;
    int line_height_ = 0;
};

// The face of all windows: that of the system's messages, or, where it lacks Chinese characters,
// one that has them; "" where no font has.
std::wstring ChineseFace();

// As the system takes it.
std::wstring Wide(TextView text);

} // namespace tarnex
