#include "adapters/system/access_log.h"

#include "adapters/windows/access_connection.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

namespace tarnex {

namespace {

constexpr auto kDriverPace = std::chrono::milliseconds(50);
constexpr std::size_t kMostWaiting = 1000; // rows for the driver

std::string About(const std::string& path, const std::string& what) {
    return what.empty() ? "" : "The log database " + path + " " + what + ".";
}

class AccessLogTable : public LogTable {
  public:
    AccessLogTable() : worker_([this] { Work(); }) {}
    ~AccessLogTable() override {
        {
            const std::lock_guard lock(mutex_);
            ending_ = true;
        }
        changed_.notify_all();
        worker_.join();
    }
    AccessLogTable(const AccessLogTable&) = delete;
    AccessLogTable& operator=(const AccessLogTable&) = delete;

    std::string Open(const Text& path) override {
        std::unique_lock lock(mutex_);
        const std::string file = ToUtf8(path);
        if (file != path_)
            open_problem_.clear();
        if (file != path_ || reopen_) {
            path_ = file;
            reopen_ = false;
            if (const auto problem = Hand(lock, {.path = file}))
                return *problem;
        }
        return late_.empty() ? open_problem_ : late_.front();
    }

    std::string Append(const LogRow& row) override {
        std::unique_lock lock(mutex_);
        if (path_.empty())
            return "No log database is open.";
        if (jobs_.size() >= kMostWaiting)
            return About(path_, "has taken no row for long, and many wait: end what locks it");
        if (auto problem = Hand(lock, {.row = row}))
            return std::move(*problem);
        if (late_.empty())
            return "";
        std::string problem = std::move(late_.front());
        late_.pop_front();
        return problem;
    }

  private:
    struct Job {
        std::string path{}; // to be opened; "": the row is to be stored
        LogRow row{};
    };

    // What came of it ("": it is done), or nothing: it takes its time. Only while the driver keeps
    // pace is it waited for.
    std::optional<std::string> Hand(std::unique_lock<std::mutex>& lock, Job job) {
        const bool idle = jobs_.empty();
        jobs_.push_back(std::move(job));
        changed_.notify_all();
        awaited_ = idle;
        if (idle && changed_.wait_for(lock, kDriverPace, [this] { return jobs_.empty(); }))
            return std::exchange(outcome_, "");
        awaited_ = false;
        return std::nullopt;
    }

    // The worker's: takes the jobs one by one; the one that it works on stays in front.
    void Work() {
        std::unique_ptr<AccessConnection> connection;
        std::string path; // of the connection
        std::unique_lock lock(mutex_);
        for (;;) {
            changed_.wait(lock, [this] { return ending_ || !jobs_.empty(); });
            if (jobs_.empty())
                return;
            const Job job = jobs_.front();
            lock.unlock();
            std::string problem = job.path.empty() ? Store(job.row, connection.get(), path)
                                                   : Connect(job.path, connection, path);
            lock.lock();
            const bool give_up = ending_ && !problem.empty(); // what waits would take as long
            Note(!job.path.empty(), std::move(problem));
            jobs_.pop_front();
            changed_.notify_all();
            if (give_up)
                return;
        }
    }

    static std::string Connect(const std::string& to, std::unique_ptr<AccessConnection>& connection,
                               std::string& path) {
        auto opened = std::make_unique<AccessConnection>(to);
        if (!opened->Problem().empty())
            return About(to, opened->Problem());
        connection = std::move(opened);
        path = to;
        return "";
    }

    static std::string Store(const LogRow& row, AccessConnection* connection,
                             const std::string& path) {
        return connection ? About(path, connection->Append(row)) : "No log database is open.";
    }

    void Note(bool is_opening, std::string problem) {
        reopen_ = reopen_ || !problem.empty();
        if (is_opening)
            open_problem_ = problem;
        if (awaited_)
            outcome_ = std::move(problem);
        else if (!is_opening && !problem.empty())
            late_.push_back(std::move(problem));
        awaited_ = false;
    }

    std::mutex mutex_; // guards all but worker_
    std::condition_variable changed_;
    std::deque<Job> jobs_;
    std::string path_;             // that was last to be opened
    bool reopen_ = false;          // something failed: the next Open() begins anew
    bool awaited_ = false;         // the job in front: its outcome is
    std::string outcome_;          // of that job
    std::string open_problem_;     // of the last opening
    std::deque<std::string> late_; // problems of rows that nobody awaited
    bool ending_ = false;
    std::thread worker_; // the last member, since it uses the others
};

class AccessLogReader : public LogReader {
  public:
    explicit AccessLogReader(const std::string& path) : connection_(path) {}

    const std::string& OpeningProblem() const { return connection_.Problem(); }
    std::string Problem() const override { return connection_.ReadingProblem(); }
    bool LockedOut() const override { return false; }
    std::optional<std::vector<StoredLogRow>> Last(int count) override {
        auto rows = connection_.Last(count);
        if (rows)
            std::ranges::reverse(*rows);
        return rows;
    }
    std::optional<std::vector<StoredLogRow>> After(std::int64_t id) override {
        return connection_.After(id);
    }
    bool Moved() const override { return false; } // nobody can move a file that is open

  private:
    AccessConnection connection_;
};

} // namespace

std::string AccessTrouble() {
    return HasOdbcDriver(kAccessDriver)
               ? ""
               : "is an Access database, for which this machine has no driver: install the 64-bit "
                 "Microsoft Access Database Engine, or make an SQLite database with \"tarnexctl "
                 "log create FILE\" and name that (setting \"log-database\")";
}

std::unique_ptr<LogTable> MakeAccessLogTable() {
    return std::make_unique<AccessLogTable>();
}

std::string AccessWritingProblem(const std::string& path) {
    std::string trouble = AccessTrouble();
    return About(path, trouble.empty() ? AccessConnection(path).Problem() : std::move(trouble));
}

Result<std::unique_ptr<LogReader>> OpenAccessLog(const std::string& path) {
    if (std::string trouble = AccessTrouble(); !trouble.empty())
        return Trouble{std::move(trouble)};
    auto reader = std::make_unique<AccessLogReader>(path);
    if (!reader->OpeningProblem().empty())
        return Trouble{reader->OpeningProblem()};
    return std::unique_ptr<LogReader>(std::move(reader));
}

} // namespace tarnex
