#pragma once

#include "events/event_record.h"

namespace tarnex {

// What people read about an event, for example
//     设备1"WebMon"的CPU负荷异常(服务器)。回复：1901重启设备，1902关闭设备。
Text NotificationText(const EventRecord& event);

} // namespace tarnex
