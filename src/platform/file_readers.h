#pragma once

namespace tarnex {

// Who may read a file that is made, where files have modes; elsewhere its folder says it.
enum class Readers { kAll, kOwner };

} // namespace tarnex
