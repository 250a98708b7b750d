#pragma once

#include "ui/layout.h"

namespace tarnex {

inline constexpr int kEm = 15; // at 96 dpi

// A screen whose Latin letters are somewhat wider than those of faces for Chinese.
inline ScreenMetrics Screen(double scale = 1) {
    const int em = int(kEm * scale);
    return {.scale = scale, .em = em, .text_width = [em](TextView text) {
                int width = 0;
                for (const char16_t c : text)
                    width += c < 0x80 ? em * 9 / 16 : em;
                return width;
            }};
}

} // namespace tarnex
