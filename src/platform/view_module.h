#pragma once

#include "platform/clock.h"
#include "platform/descriptor_source.h"
#include "platform/view.h"

#include <functional>
#include <string>

namespace tarnex {

// What a view gets from the program that shows windows; everything must outlive the view.
struct ViewHost {
    Clock& clock;
    DescriptorSource& descriptors;
    std::function<void(const std::string& line)> notice; // for what an operator must act on
    std::function<void()> lost; // the screen is gone, and with it every window; from the loop
};

// A view lives in a module of its own, so that the program needs no window system. The module
// exports two functions of these types, with C linkage.

// The version of the program that the module was built with, "1.0.0".
using ViewVersionFunction = const char*();
inline constexpr char kViewVersionSymbol[] = "TarnexViewVersion";

// The view, which the caller owns, or nullptr and in trouble what stands in the way. One view a
// process, and the module stays loaded.
using OpenViewFunction = ScreenView*(const ViewHost& host, std::string& trouble);
inline constexpr char kOpenViewSymbol[] = "TarnexOpenView";

} // namespace tarnex
