#include "operator/port_check.h"

#include "operator/text_output.h"

#include <algorithm>
#include <map>

namespace tarnex {

namespace {

using PortLevel = PortState::Level;

// Behind these a port is left alone on purpose.
constexpr TextView kNothing[] = {u"/dev/null", u"NUL", uR"(\\.\NUL)"};

bool IsNothing(const std::string& device) {
    return std::ranges::any_of(
        kNothing, [&](TextView each) { return EqualIgnoringCase(each, FromUtf8(device)); });
}

std::string Described(const std::string& device, const PortLook& look) {
    return device + (look.what.empty() ? "" : " (" + look.what + ")");
}

class PortCheck {
  public:
    PortCheck(const OperatorWorld& world, const SettingsFile& settings, long service)
        : world_(world), own_(settings.AtStart().device_paths),
          holder_("process " + std::to_string(service) + " ") {}

    std::vector<PortState> Run() {
        for (std::size_t i = 0; i < own_.size(); ++i)
            if (!own_[i].empty())
                Configured(Name(i), own_[i]);
        for (std::size_t i = 0; i < own_.size(); ++i)
            if (own_[i].empty())
                Default(Name(i), world_.serial_paths[i]);
        return std::move(states_);
    }

  private:
    static std::string Name(std::size_t index) { return "COM" + std::to_string(index + 1); }

    void Add(PortLevel level, const std::string& name, const std::string& text,
             bool of_settings = false) {
        states_.push_back(
            {.level = level, .name = name, .setting{}, .text = text, .of_settings = of_settings});
    }

    void Configured(const std::string& name, const std::string& device) {
        if (IsNothing(device))
            Add(PortLevel::kGood, name, "is left alone");
        else if (const PortLook look = world_.machine.Port(device); !look.there)
            Add(PortLevel::kWarning, name, device + " is not there" + Instead(), true);
        else
            Present(name, device, look);
        states_.back().setting = "com" + name.substr(3) + "-device";
    }

    // Of one that is not there, or that a setting names, there is nothing to tell.
    void Default(const std::string& name, const std::string& device) {
        const PortLook look = world_.machine.Port(device);
        if (look.there && !numbers_.contains(look.device))
            Present(name, device, look);
    }

    void Present(const std::string& name, const std::string& device, const PortLook& look) {
        const std::string what = Described(device, look);
        const auto [same, first] = numbers_.emplace(look.device, name);
        const bool by_service = look.held_by.starts_with(holder_);
        if (!first)
            Add(PortLevel::kWarning, name,
                what + " is also " + same->second +
                    ", so each is tried for the same device: name it once",
                true);
        else if (!look.forbidden.empty())
            Add(PortLevel::kError, name,
                what + " may not be opened by the service: " + look.forbidden, true);
        else if (!look.held_by.empty() && !by_service)
            Add(PortLevel::kError, name,
                what + " is held by " + look.held_by + ": end that program");
        else if (look.probed)
            Add(PortLevel::kWarning, name,
                what + " is probed by a modem manager, which disturbs the unit: give the port a "
                       "name that it leaves alone (docs/operating.md)");
        else
            Add(PortLevel::kGood, name, what + (by_service ? ", open" : ""));
        states_.back().there = true;
    }

    std::string Instead() {
        const std::vector<std::string> others = world_.machine.Ports();
        return others.empty() ? ", nor any other port" : "; there is: " + Joined(others, ", ");
    }

    const OperatorWorld& world_;
    const SerialPaths own_;
    const std::string holder_;
    std::map<std::string, std::string> numbers_; // by devices without links
    std::vector<PortState> states_;
};

} // namespace

std::vector<PortState> LookAtPorts(const OperatorWorld& world, const SettingsFile& settings,
                                   long service) {
    return PortCheck(world, settings, service).Run();
}

std::vector<std::string> PortsThere(const OperatorWorld& world) {
    std::vector<std::string> lines;
    for (const std::string& port : world.machine.Ports()) {
        const PortLook look = world.machine.Port(port);
        lines.push_back(Described(port, look) +
                        (look.held_by.empty() ? "" : ", held by " + look.held_by));
    }
    return lines;
}

} // namespace tarnex
