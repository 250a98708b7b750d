#pragma once

#include "ui/layout.h"

namespace tarnex {

// The layout of one of the program's forms, found by the form's name.
Layout LayoutOf(const Form& form);

} // namespace tarnex
