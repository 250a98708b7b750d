#include "operator/commands.h"
#include "operator/file_access.h"
#include "operator/setting_catalog.h"
#include "operator/settings_check.h"
#include "operator/settings_file.h"
#include "operator/setup_questions.h"
#include "operator/text_output.h"
#include "platform/file_path.h"

#include <algorithm>
#include <array>
#include <iomanip>
#include <ostream>

namespace tarnex {

namespace {

namespace fs = std::filesystem;

constexpr const char* kEncoding = "GBK"; // of the sample

std::string ReadData(const OperatorWorld& world, const std::string& path) {
    if (const std::error_code problem = ReadingProblem(path))
        throw CannotRead(world.words, "file " + path, problem, "install the program with its data");
    return ReadWholeFile(path);
}

bool Exists(const std::string& path) {
    std::error_code error;
    return fs::exists(ToPath(path), error);
}

void RefuseToOverwrite(const std::string& path) {
    throw Failure(kExitCannotCreate, path +
                                         " is there already and stays as it is: change it with "
                                         "\"tarnexctl settings\", or write a new one with "
                                         "--force, which keeps the old one as " +
                                         path + ".old");
}

// The sample with the answers in it.
class Draft {
  public:
    Draft(const OperatorWorld& world, std::string sample)
        : code_page_(world.make_code_page(kEncoding)), content_(std::move(sample)) {}

    void Set(const Setting& setting, const std::string& utf8) {
        const Text value = FromUtf8(utf8);
        CheckHolds(*code_page_, kEncoding, setting, value);
        content_ = IniDocument::Set(content_, *code_page_, setting.section, setting.key, value)
                       .value(); // the value fits the setting
    }
    void Switch(const Setting& setting, bool on) { Set(setting, on ? "1" : "0"); }
    const std::string& Content() const { return content_; }

  private:
    std::unique_ptr<const CodePage> code_page_;
    std::string content_;
};

std::string Content(const OperatorWorld& world, const std::string& sample,
                    const SetupAnswers& answers, const std::string& log_path) {
    Draft draft(world, sample);
    for (const SetupQuestion& question : SetupQuestions())
        if (const auto answer = answers.find(question.name);
            answer != answers.end() && question.setting)
            draft.Set(*question.setting,
                      answer->second == kNone
                          ? ""
                          : ToUtf8(StoredForm(*question.setting, answer->second)));
    const PortAnswer port = ParsePort(answers.at("port"), world.serial_paths).value();
    if (port.number != 0)
        draft.Set("last-port"_setting, std::to_string(port.number));
    if (!port.device.empty())
        draft.Set("com1-device"_setting, port.device);
    draft.Switch("sms-to-number-1"_setting, true);
    // One telephone needs each text once.
    draft.Switch("sms-to-number-2"_setting, answers.at("number-2") != answers.at("number-1"));
    draft.Switch("mail-login"_setting, answers.contains("mail-password"));
    draft.Set("log-database"_setting, log_path);
    return draft.Content();
}

void MakeFolders(const OperatorWorld& world, const fs::path& folder) {
    std::error_code error;
    if (!folder.empty())
        fs::create_directories(folder, error);
    if (error)
        throw CannotWrite(world.words, "folder " + FromPath(folder), error);
}

void KeepOld(const OperatorWorld& world, const std::string& path) {
    std::error_code error;
    const std::string old = path + ".old";
    // Over another file not every library copies.
    fs::remove(ToPath(old), error);
    if (!error)
        fs::copy_file(ToPath(path), ToPath(old), error);
    if (error)
        throw CannotWrite(world.words, "copy " + old, error);
}

// Whether nobody has set the system up yet: the numbers are the place-holders of the sample, which
// the package puts there so that the service starts.
bool StillTheSample(const OperatorWorld& world, const std::string& sample_path) {
    const SettingsFile present(world);
    const SettingsFile sample(world, sample_path);
    return std::ranges::all_of(
        std::array{&"alarm-number-1"_setting, &"alarm-number-2"_setting},
        [&](const Setting* number) { return present.Value(*number) == sample.Value(*number); });
}

void WriteSettings(const OperatorWorld& world, const std::string& content, bool replace) {
    const std::string& path = world.settings_path;
    const auto acting = ActForOwner(world, path);
    MakeFolders(world, ToPath(path).parent_path());
    if (replace && Exists(path))
        KeepOld(world, path);
    bool stands_there = false;
    const std::unique_ptr<SettingsStore> store = world.open_settings(path);
    const bool written =
        store->Update([&](const std::string& present) -> std::optional<std::string> {
            stands_there = !present.empty() && !replace;
            return stands_there ? std::nullopt : std::optional(content);
        });
    if (stands_there)
        RefuseToOverwrite(path);
    if (!written)
        throw CannotWrite(world.words, "settings file " + path, store->Problem(),
                          HolderOf(world, path, store->Problem()));
}

void MakeLog(const OperatorWorld& world, const std::string& path, const std::string& schema) {
    const auto acting = ActForOwner(world, path);
    if (Exists(path)) {
        world.out << "kept the log " << path << '\n';
        if (const std::string problem = world.logs.WritingProblem(path); !problem.empty())
            world.err << "tarnexctl: warning: " << Printable(problem) << '\n';
        return;
    }
    MakeFolders(world, ToPath(path).parent_path());
    const std::string problem = world.logs.Create(path, schema);
    if (!problem.empty())
        throw Failure(kExitCannotCreate, problem);
    world.out << "made the log " << path << '\n';
}

void SayWhatIsNext(const OperatorWorld& world) {
    const SettingsFile file(world);
    for (const Finding& finding : CheckSettingsHere(world, file))
        world.out << "note: " << Printable(finding.name + " " + finding.text) << '\n';
    const std::pair<std::string, const char*> next[] = {
        {world.words.restart_service, "starts the service with these settings"},
        {"tarnexctl test", "raises a first alarm and follows it"},
        {"tarnexctl status --watch", "the unit is ready about 30 seconds after the start"},
        {"tarnexctl settings list", "shows everything else that can be set"}};
    std::size_t width = 0;
    for (const auto& [command, meaning] : next)
        width = std::max(width, command.size());
    world.out << "\nNext:\n" << std::left;
    for (const auto& [command, meaning] : next)
        world.out << "  " << std::setw(int(width) + 2) << command << meaning << '\n';
}

} // namespace

ExitStatus Setup(OperatorWorld& world, const SetupOptions& options) {
    const std::string& path = world.settings_path;
    const std::string sample_path = FileIn(world.data_folder, "Tarnex.ini.sample");
    const std::string sample = ReadData(world, sample_path);
    const bool replace = options.force || (Exists(path) && StillTheSample(world, sample_path));
    if (Exists(path) && !replace)
        RefuseToOverwrite(path);
    const std::string schema = ReadData(world, FileIn(world.data_folder, "log-schema.sql"));
    const std::string log_path =
        options.log_path.empty()
            ? FileIn(FromPath(fs::absolute(ToPath(world.history_path)).parent_path()), "log.db")
            : options.log_path;
    if (const std::string wrong = Objection("log-database"_setting, FromUtf8(log_path));
        !wrong.empty())
        throw Failure(kExitData, "--log-database: \"" + log_path + "\" " + wrong);

    const SetupAnswers answers = AskQuestions(world, options.answers);
    WriteSettings(world, Content(world, sample, answers, log_path), replace);
    world.out << "wrote the settings " << path << '\n';
    MakeLog(world, log_path, schema);
    SayWhatIsNext(world);
    return kExitDone;
}

} // namespace tarnex
