#include "adapters/system/notice_prefix.h"

namespace tarnex {

std::string NoticePrefix(NoticeLevel) {
    return "";
}

} // namespace tarnex
