#include "tools/unit_identity.h"

namespace tarnex {

namespace {

constexpr TextView kK7100 = u"Tarnex K7100";
constexpr TextView kK7200 = u"Tarnex K7200";

} // namespace

std::optional<Text> ModelOf(TextView version) {
    if (version.ends_with(u"1.0"))
        return Text(kK7100);
    if (version.ends_with(u"2.0"))
        return Text(kK7200);
    return std::nullopt;
}

Task<> ListIdentity(CommandSet& commands, bool with_signal, std::function<void(const Text&)> add) {
    add(Text(kLogRule));
    const Text first_version = co_await commands.ChkVer();
    if (const std::optional<Text> model = ModelOf(first_version)) {
        add(*model);
        if (*model == kK7200)
            add(Text(kLogRule));
    }
    const Text name = co_await commands.RDName();
    add(u"设备名称    :" + name);
    const Text version = co_await commands.ChkVer();
    add(u"设备版本    :" + version);
    const Text serial = co_await commands.RDSerial();
    add(u"序列号      :" + serial);
    if (with_signal) {
        const Text signal = co_await commands.RDCSQ();
        add(u"网络信号强度:" + signal);
    }
}

} // namespace tarnex
