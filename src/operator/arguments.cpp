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

std::string Trouble(const CLI::App& app, const CLI::ParseError& error) {
    const CLI::App& command = Deepest(app);
    std::vector<std::string> unknown = app.remaining(true);
    std::erase(unknown, "--");
    if (unknown.empty() && command.get_require_subcommand_min() > 0 &&
        error.get_name() == "RequiredError")
        return "the command is missing";
    const std::string what = OneLine(error.what());
    if (error.get_name() == "ArgumentMismatch" && what.ends_with(" missing"))
        return what.substr(0, what.find(':')) + " needs a value";
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

std::optional<ExitStatus> ReadArguments(CLI::App& app, std::vector<std::string> arguments,
                                        std::ostream& out, std::ostream& err) {
    app.set_version_flag("--version", app.get_name() + " " TARNEX_VERSION);
    arguments = WithEmptyValues(std::move(arguments));
    std::reverse(arguments.begin(), arguments.end()); // as the parser wants them
    try {
        app.parse(std::move(arguments));
    } catch (const CLI::Success& asked) { // help or version
        std::ostringstream text;
        app.exit(asked, text, text);
        out << text.str();
        return kExitDone;
    } catch (const CLI::ParseError& error) {
        const std::string trouble = EscapeControls(Trouble(app, error));
        err << app.get_name() << ": " << trouble << " (try \"" << FullName(Deepest(app))
            << " --help\")\n";
        return kExitUsage;
    }
    return std::nullopt;
}

CLI::Option* AddValue(CLI::App& app, const std::string& name, const std::string& type,
                      const std::string& meaning,
                      std::function<std::string(const std::string& value)> read) {
    const auto take = [name, read = std::move(read)](const std::string& value) {
        if (const std::string trouble = read(value); !trouble.empty())
            throw CLI::ValidationError(name, trouble);
    };
    return app.add_option_function<std::string>(name, take, meaning)
        ->type_name(type)
        ->trigger_on_parse();
}

} // namespace tarnex
