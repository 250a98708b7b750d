#pragma once

#include "platform/line_files.h"
#include "platform/log_table.h"
#include "platform/message_history.h"
#include "platform/service_controller.h"
#include "platform/settings_store.h"
#include "platform/status_sink.h"

#include <map>
#include <string>
#include <vector>

namespace tarnex {

// A settings file in memory.
class SimulatedSettingsStore : public SettingsStore {
  public:
    std::string Name() const override { return "Tarnex.ini"; }
    std::optional<FileStamp> Stamp() const override {
        if (!content_ || !Readable)
            return std::nullopt;
        return FileStamp{
            .file = file_, .size = content_->size(), .changed = version_, .settled = true};
    }
    SettingsReading Read() const override {
        if (content_ && Readable)
            return {.content = *content_, .problem = {}};
        return {.content = "",
                .problem = std::make_error_code(content_ ? std::errc::permission_denied
                                                         : std::errc::no_such_file_or_directory)};
    }
    bool
    Update(const std::function<std::optional<std::string>(const std::string&)>& edit) override {
        const bool possible = Writable && (Readable || !content_);
        problem_ =
            possible ? std::error_code() : std::make_error_code(std::errc::permission_denied);
        if (!possible)
            return false;
        if (auto content = edit(content_.value_or(""))) {
            SetContent(std::move(*content));
            ++file_;
        }
        return true;
    }
    std::error_code Problem() const override { return problem_; }

    // What another program does to the file.
    void SetContent(std::string content) {
        content_ = std::move(content);
        ++version_;
    }
    void Delete() { content_.reset(); }
    bool Readable = true;
    bool Writable = true;

  private:
    std::optional<std::string> content_;
    std::int64_t version_ = 0;
    std::uint64_t file_ = 1;
    std::error_code problem_;
};

// Text files in memory.
class SimulatedLineFiles : public LineFiles {
  public:
    Result<std::unique_ptr<LineFile>> Open(const std::string& path) override {
        const auto file = Files.find(path);
        if (file == Files.end())
            return Trouble{"no such file or folder"};
        return std::unique_ptr<LineFile>(std::make_unique<File>(file->second, OpenCount));
    }

    std::map<std::string, std::string> Files; // path to content
    int OpenCount = 0;                        // files that are open now

  private:
    class File : public LineFile {
      public:
        File(std::string content, int& open_count)
            : content_(std::move(content)), open_count_(open_count) {
            ++open_count_;
        }
        ~File() override { --open_count_; }
        std::optional<std::string> ReadLine() override {
            if (at_ >= content_.size())
                return std::nullopt;
            const std::size_t end = std::min(content_.find('\n', at_), content_.size());
            std::string line = content_.substr(at_, end - at_);
            line.resize(std::min(line.size(), kLongestLine));
            at_ = end + 1;
            return line;
        }

      private:
        const std::string content_;
        std::size_t at_ = 0;
        int& open_count_;
    };
};

// A log table in memory.
class SimulatedLogTable : public LogTable {
  public:
    std::string Open(const Text& path) override {
        ++Opened;
        open_ = open_ || (Problem.empty() && !path.empty());
        return Problem;
    }
    std::string Append(const LogRow& row) override {
        if (!Problem.empty() || !open_)
            return Problem.empty() ? "no log database is open" : Problem;
        Rows.push_back(row);
        return "";
    }

    std::string Problem; // not "": every call fails with it
    std::vector<LogRow> Rows;
    int Opened = 0;

  private:
    bool open_ = false;
};

// A history in memory.
class SimulatedHistory : public MessageHistory {
  public:
    Result<std::vector<HistoryRow>> Rows(const HistoryQuery& query) override {
        if (!Problem.empty())
            return Trouble{Problem};
        std::vector<HistoryRow> rows;
        for (const auto& [id, row] : Stored) {
            const bool message = row.kind == "SMS" || row.kind == "mail";
            const bool not_sent = !row.fate.empty() && row.fate != "sent" &&
                                  row.fate != "held back" && row.again_as == 0;
            if ((!query.no_signal || row.kind != "signal") && id > query.after &&
                row.at >= query.since && (query.until == 0 || row.at < query.until) &&
                (!query.unit || !message) && (query.id == 0 || id == query.id) &&
                (!query.waiting || (message && row.fate.empty())) && (!query.not_sent || not_sent))
                rows.push_back(row);
        }
        if (query.last > 0 && rows.size() > std::size_t(query.last))
            rows.erase(rows.begin(), rows.end() - query.last);
        return rows;
    }
    std::string Store(const std::vector<HistoryChange>& changes) override {
        if (Problem.empty())
            for (const HistoryChange& change : changes)
                std::visit([this](const auto& each) { Apply(each); }, change);
        return Problem;
    }
    void KeepTo(int megabytes) override { Megabytes = megabytes; }

    std::string Problem; // not "": every call fails with it
    std::map<std::int64_t, HistoryRow> Stored;
    int Megabytes = 0;

  private:
    void Apply(const HistoryRow& row) {
        Stored.emplace(row.id, row);
        if (const auto lost = Stored.find(row.again_of); lost != Stored.end())
            lost->second.again_as = row.id;
    }
    void Apply(const HistoryAttempt& attempt) {
        if (const auto row = Stored.find(attempt.id); row != Stored.end())
            row->second.attempts += attempt.text;
    }
    void Apply(const HistoryEnd& end) {
        if (const auto row = Stored.find(end.id); row != Stored.end()) {
            row->second.fate = end.fate;
            row->second.ended = end.at;
        }
    }
};

// A service manager that a test plays.
class SimulatedServiceController : public ServiceController {
  public:
    bool Install(bool interactive) override {
        Log.push_back(interactive ? "install interactive" : "install");
        return InstallSucceeds;
    }
    bool Uninstall() override {
        Log.push_back("uninstall");
        return true;
    }
    void SaveParameter(std::string_view name, std::string_view value) override {
        Log.push_back("parameter " + std::string(name) + "=" + std::string(value));
    }
    void StartService(int controls_accepted, ServiceEvents events) override {
        Log.push_back("start " + std::to_string(controls_accepted));
        Events = std::move(events);
    }
    void ReportReady() override { Log.push_back("ready"); }
    void LogEvent(EventType type, int number, std::string_view text) override {
        Log.push_back("event " + std::to_string(int(type)) + " " + std::to_string(number) + " " +
                      std::string(text));
    }

    bool InstallSucceeds = true;
    ServiceEvents Events;         // call these to play the service manager
    std::vector<std::string> Log; // what it was asked, in order
};

class SimulatedInstanceLock : public InstanceLock {
  public:
    bool Acquire() override { return !HeldByAnother; }
    void KillLeftOver() override { ++Kills; }

    bool HeldByAnother = false;
    int Kills = 0;
};

// What the service tells of its state.
class SimulatedStatusSink : public StatusSink {
  public:
    std::string Replace(const std::string& text) override {
        ++Writes;
        if (Problem.empty())
            Text = text;
        return Problem;
    }

    std::string Problem; // not "": every write fails with it
    std::string Text;    // "" when there is none
    int Writes = 0;
};

} // namespace tarnex
