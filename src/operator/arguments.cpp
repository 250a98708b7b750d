#include "operator/arguments.h"

#include "operator/suggestion.h"
#include "platform/text.h"

#include <algorithm>
#include <ostream>
#include <sstream>

#include <CLI/CLI.hpp>

namespace tarnex {

namespace {

// The innermost command that was given.
const CLI::App& Deepest(const CLI::App& app) {
    return app.get_subcommands().empty() ? app : Deepest(*app.get_subcommands().front());
}

std::string FullName(const CLI::App& app) {
    const CLI::App* parent = app.get_parent();
    return (parent ? FullName(*parent) + " " : "") + app.get_name();
}

std::vector<std::string> OptionsOf(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* a = &app; a; a = a->get_parent())
        for (const CLI::Option* option : a->get_options())
            names.push_back(option->get_name());
    return names;
}

std::vector<std::string> CommandsOf(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands({}))
        names.push_back(command->get_name());
    return names;
}

// "--memo=" gives an empty value, for which the parser would take the next word.
std::vector<std::string> WithEmptyValues(std::vector<std::string> arguments) {
    std::vector<std::string> words;
    bool options = true; // none behind "--"
    for (std::string& word : arguments) {
        options = options && word != "--";
        const bool empty_value = options && word.size() > 3 && word.starts_with("--") &&
                                 word.find('=') == word.size() - 1;
        if (empty_value)
            word.pop_back();
        words.push_back(std::move(word));
        if (empty_value)
            words.emplace_back();
    }
    return words;
}

std::string OneLine(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

std::string ArgumentTrouble(const CLI::App& app, const CLI::ParseError& error) {
    const CLI::App& command = Deepest(app);
    std::vector<std::string> unknown = app.remaining(true);
    std::erase(unknown, "--");
    if (unknown.empty() && command.get_require_subcommand_min() > 0 &&
        error.get_name() == "RequiredError")
        return "the command is missing";
    const std::string what = OneLine(error.what());
    if (error.get_name() == "ArgumentMismatch" && what.ends_with(" missing"))
        return what.substr(0, what.find(':')) + " needs a value";
    if (error.get_name() == "ArgumentMismatch" && what.find(": At Most 1 ") != what.npos)
        return what.substr(0, what.find(':')) + " is given more than once";
    if (unknown.empty())
        return what;
    const std::string& word = unknown.front();
    if (word.starts_with('-'))
        return "there is no option " + word + DidYouMean(Closest(word, OptionsOf(command)));
    const std::vector<std::string> commands = CommandsOf(command);
    if (commands.empty())
        return "\"" + word + "\" is one word too many";
    return "there is no command \"" + word + "\"" + DidYouMean(Closest(word, commands));
}

} // namespace

Arguments::Arguments(const std::string& program, const std::string& what)
    : app_(std::make_shared<CLI::App>(what, program)) {
    app_->fallthrough();
}

Arguments::Arguments(std::shared_ptr<CLI::App> app) : app_(std::move(app)) {}

Arguments Arguments::Command(const std::string& name, const std::string& what) {
    return Arguments({app_, app_->add_subcommand(name, what)});
}

void Arguments::RequireCommand() {
    app_->require_subcommand(1);
}

void Arguments::Footer(const std::string& text) {
    app_->footer(text);
}

void Arguments::OnGiven(Check check) {
    app_->callback([check = std::move(check)] {
        if (const std::string trouble = check(); !trouble.empty())
            throw CLI::ValidationError(trouble);
    });
}

void Arguments::Flag(const std::string& name, bool& given, const std::string& meaning) {
    app_->add_flag(name, given, meaning);
}

void Arguments::Value(const std::string& name, const std::string& type, const std::string& meaning,
                      std::string& value) {
    app_->add_option(name, value, meaning)->type_name(type)->capture_default_str();
}

void Arguments::Value(const std::string& name, const std::string& type, const std::string& meaning,
                      std::optional<std::string>& value) {
    app_->add_option(name, value, meaning)->type_name(type);
}

void Arguments::Number(const std::string& name, const std::string& type, const std::string& meaning,
                       int& value, int lowest, int highest) {
    CLI::Option* option = app_->add_option(name, value, meaning)
                              ->type_name(type)
                              ->check(CLI::Range(lowest, highest).description(""));
    if (value >= lowest && value <= highest)
        option->capture_default_str();
}

void Arguments::EachValue(const std::string& name, const std::string& type,
                          const std::string& meaning, ReadValue read, const std::string& heading) {
    const auto take = [name, read = std::move(read)](const std::string& value) {
        if (const std::string trouble = read(value); !trouble.empty())
            throw CLI::ValidationError(name, trouble);
    };
    CLI::Option* option = app_->add_option_function<std::string>(name, take, meaning)
                              ->type_name(type)
                              ->trigger_on_parse();
    if (!heading.empty())
        option->group(heading);
}

void Arguments::RequiredWord(const std::string& name, const std::string& meaning,
                             std::string& word) {
    app_->add_option(name, word, meaning)->type_name("")->required();
}

void Arguments::Words(const std::string& name, const std::string& meaning,
                      std::vector<std::string>& words) {
    app_->add_option(name, words, meaning)->type_name("");
}

std::optional<ExitStatus> Arguments::Read(std::vector<std::string> arguments, std::ostream& out,
                                          std::ostream& err) {
    app_->set_version_flag("--version", app_->get_name() + " " TARNEX_VERSION);
    arguments = WithEmptyValues(std::move(arguments));
    std::reverse(arguments.begin(), arguments.end()); // as the parser wants them
    try {
        app_->parse(std::move(arguments));
    } catch (const CLI::Success& asked) { // help or version
        std::ostringstream text;
        app_->exit(asked, text, text);
        out << text.str();
        return kExitDone;
    } catch (const CLI::ParseError& error) {
        const std::string trouble = EscapeControls(ArgumentTrouble(*app_, error));
        err << app_->get_name() << ": " << trouble << " (try \"" << FullName(Deepest(*app_))
            << " --help\")\n";
        return kExitUsage;
    }
    return std::nullopt;
}

} // namespace tarnex
