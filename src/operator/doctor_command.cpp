#include "mail/server_address.h"
#include "operator/commands.h"
#include "operator/history_file.h"
#include "operator/port_check.h"
#include "operator/settings_check.h"
#include "operator/status_reading.h"
#include "operator/text_output.h"
#include "platform/file_path.h"

#include <algorithm>
#include <filesystem>
#include <ostream>

namespace tarnex {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kSmtpReady = "220";

// Goes through everything once, a row each.
class Doctor {
  public:
    explicit Doctor(OperatorWorld& world) : world_(world) {}

    ExitStatus Run() {
        const std::optional<SettingsFile> settings = Settings();
        const std::optional<StatusReading> state = Service();
        if (settings)
            Ports(*settings, state);
        try {
            if (state && state->running)
                Running(*state, settings ? settings->AtStart() : StartSettings());
        } catch (const Json::exception&) {
            Bad("service", world_.status_path + " lacks something: restart the service");
        }
        if (settings) {
            Log(*settings);
            History();
            MailServer(*settings);
        }
        const std::string clock = world_.machine.ClockTrouble();
        clock.empty() ? Good("clock", "as far as the machine tells") : Poor("clock", clock);
        Good("version", Joined(world_.modules, ", "));
        table_.Print(world_);
        return bad_ > 0 ? kExitErrors : poor_ > 0 ? kExitWarnings : kExitDone;
    }

  private:
    void Good(const std::string& what, const std::string& text) {
        table_.Add({{"ok", Colour::kGood}, what, text});
    }
    void Poor(const std::string& what, const std::string& text) {
        ++poor_;
        table_.Add({{"look", Colour::kWarning}, what, text});
    }
    void Bad(const std::string& what, const std::string& text) {
        ++bad_;
        table_.Add({{"BAD", Colour::kBad}, what, text});
    }

    std::optional<SettingsFile> Settings() {
        try {
            SettingsFile file(world_);
            const std::vector<Finding> findings = CheckSettings(file);
            for (const Finding& finding : findings)
                finding.level == Finding::Level::kError
                    ? Bad("settings", finding.name + " " + finding.text)
                    : Poor("settings", finding.name + " " + finding.text);
            if (findings.empty())
                Good("settings", file.Path());
            return file;
        } catch (const Failure& failure) {
            Bad("settings", failure.what());
            return std::nullopt;
        }
    }

    std::optional<StatusReading> Service() {
        try {
            StatusReading state = ReadStatusFile(world_);
            if (state.running)
                Good("service",
                     "runs for " + AgeText(state.SecondsSince(state.status.at("started_at"))));
            else
                Bad("service", state.absence);
            return state;
        } catch (const Failure& failure) {
            Bad("service", failure.what());
        } catch (const Json::exception&) {
            Bad("service", world_.status_path + " lacks something: restart the service");
        }
        return std::nullopt;
    }

    void Ports(const SettingsFile& settings, const std::optional<StatusReading>& state) {
        const long service = state && state->running ? state->status.at("pid").get<long>() : 0;
        const std::vector<PortState> ports = LookAtPorts(world_, settings, service);
        for (const PortState& port : ports)
            port.level == PortState::Level::kGood      ? Good(port.name, port.text)
            : port.level == PortState::Level::kWarning ? Poor(port.name, port.text)
                                                       : Bad(port.name, port.text);
        if (std::ranges::any_of(ports, &PortState::there))
            return;
        const std::vector<std::string> others = world_.machine.Ports();
        Bad("ports", "none of the ports is there: " +
                         (others.empty() ? "plug the adapter of the unit in"
                                         : "there is: " + Joined(others, ", ") +
                                               "; name the one of the unit: tarnexctl settings "
                                               "set com1-device " +
                                               others.front()));
    }

    void Running(const StatusReading& state, const StartSettings& settings) {
        const Json& status = state.status;
        const Json& unit = status.at("unit");
        const std::string phase = unit.at("state").get<std::string>() + " for " +
                                  AgeText(state.SecondsSince(unit.at("state_since")));
        UnitIs(UnitPhase::kReady, unit)
            ? Good("unit",
                   phase + ", " +
                       (unit.at("version").is_null() ? "version not read"
                                                     : unit.at("version").get<std::string>()) +
                       ", signal " + unit.at("signal").dump())
            : Bad("unit", "is " + phase + ", so no SMS leaves");
        for (const Json& trouble : status.at("troubles"))
            trouble.at("level") == "error" ? Bad(trouble.at("topic"), trouble.at("text"))
                                           : Poor(trouble.at("topic"), trouble.at("text"));
        std::vector<std::string> closed;
        for (const Json& link : status.at("links"))
            if (!link.at("listening").get<bool>())
                closed.push_back(WithHolder(link.at("port").get<std::uint16_t>(), settings));
        closed.empty() ? Good("link ports", "open")
                       : Bad("link ports", "not open: " + Joined(closed, "; "));
    }

    std::string WithHolder(std::uint16_t port, const StartSettings& settings) {
        const std::string holder = world_.machine.PortHolder(settings.bind_address, port);
        return std::to_string(port) + (holder.empty() ? "" : ", held by " + holder);
    }

    void Log(const SettingsFile& settings) {
        const std::string path = ToUtf8(settings.Value("log-database"_setting));
        std::error_code unknown;
        if (path.empty() || (!fs::exists(ToPath(path), unknown) && !unknown))
            return; // the settings' row says it
        const auto acting = world_.owners.ActFor(path, settings.Path());
        if (!acting)
            return Bad("log", acting.TroubleText());
        const auto log = world_.logs.Open(path);
        log ? Good("log", path) : Bad("log", path + " " + log.TroubleText());
    }

    void History() {
        if (!HistoryFile::IsThere(world_))
            return Good("history", "none yet: it is made with the first message");
        const auto since =
            std::chrono::floor<std::chrono::milliseconds>((world_.now() - 24h).time_since_epoch());
        try {
            HistoryFile history(world_);
            const auto newest = history.Rows({.last = 1});
            const auto not_sent = history.Rows({.since = since.count(), .not_sent = true});
            const std::string rows =
                world_.history_path +
                (newest.empty() ? ", no row" : ", rows up to " + std::to_string(newest[0].id));
            not_sent.empty()
                ? Good("history", rows + ", none given up or lost in a day")
                : Poor("history", rows + ", not sent in a day: " + std::to_string(not_sent.size()) +
                                      "; see: tarnexctl history --unsent");
        } catch (const Failure& failure) {
            Bad("history", failure.what());
        }
    }

    void MailServer(const SettingsFile& settings) {
        const TextView value = settings.Value("mail-server"_setting);
        if (Trim(value).empty())
            return Good("mail", "no server is set");
        const auto address = ParseServerAddress(value);
        if (!address)
            return Bad("mail",
                       "\"" + ToUtf8(value) + "\" is no address of a server: set mail-server");
        const std::string name = ToUtf8(address->host) + ":" + std::to_string(address->port);
        Result<std::string> heard = world_.greeting_of(ToUtf8(address->host), address->port);
        if (!heard)
            Bad("mail", "server " + name + ": " + heard.TroubleText() +
                            "; look at its name, its port and the network");
        else if (!(*heard).starts_with(kSmtpReady))
            Bad("mail",
                "server " + name + " does not greet as a mail server: " + Shortened(*heard, 60));
        else
            Good("mail", "server " + name + " greets");
    }

    OperatorWorld& world_;
    TextTable table_;
    int poor_ = 0;
    int bad_ = 0;
};

} // namespace

ExitStatus Examine(OperatorWorld& world) {
    return Doctor(world).Run();
}

} // namespace tarnex
