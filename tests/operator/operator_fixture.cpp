#include "tests/operator/operator_fixture.h"

#include <regex>

#include <nlohmann/json.hpp>

namespace tarnex {

namespace {

// What a value lacks of what a schema says; the words of JSON Schema that ours uses.
void ExpectFits(const json& value, const json& schema, const std::string& where) {
    const json types = schema["type"].is_array() ? schema["type"] : json::array({schema["type"]});
    const std::string type = value.is_number_integer() ? "integer" : value.type_name();
    ASSERT_NE(std::ranges::count(types, json(type)), 0) << where << " is " << type;
    if (schema.value("format", "") == "date-time" && value.is_string()) {
        const std::regex time(R"(\d{4}(-\d\d){2}T\d\d(:\d\d){2}[+-]\d\d:\d\d)");
        EXPECT_TRUE(std::regex_match(value.get<std::string>(), time)) << where << value;
    }
    if (schema.contains("enum")) {
        EXPECT_NE(std::ranges::count(schema["enum"], value), 0) << where << value;
    }
    for (const auto& item : value.is_array() ? value : json::array())
        ExpectFits(item, schema["items"], where + "[]");
    if (!value.is_object())
        return;
    json required = schema.value("required", json::array());
    if (schema.contains("if")) // the service runs
        for (const auto& name : schema[value["running"] ? "then" : "else"]["required"])
            required.push_back(name);
    for (const auto& name : required)
        EXPECT_TRUE(value.contains(name)) << where << name;
    if (!schema.contains("properties"))
        return;
    for (const auto& [name, part] : value.items()) {
        ASSERT_TRUE(schema["properties"].contains(name)) << where << '.' << name;
        ExpectFits(part, schema["properties"][name], where + "." + name);
    }
}

} // namespace

json OperatorTest::Answer(std::vector<std::string> arguments) {
    const bool status = arguments[0] == "status";
    std::string command = arguments[0];
    if (command == "log" || command == "settings")
        command += " " + arguments[1];
    arguments.push_back("--json");
    Run(std::move(arguments));
    const json schema = json::parse(FileContent(
        TARNEX_PACKAGING + std::string(status ? "/status" : "/tarnexctl") + "-schema.json"));
    json answer;
    std::istringstream text(out.str());
    while (text >> std::ws && !text.eof()) {
        std::string part;
        std::getline(text, part, command == "log tail" || command == "history" ? '\n' : '\0');
        answer = json::parse(part);
        ExpectFits(answer, status ? schema : schema["definitions"][command], command);
    }
    return answer;
}

} // namespace tarnex
