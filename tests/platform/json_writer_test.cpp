#include "platform/json_writer.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

TEST(JsonWriter, WritesEveryKindOfValue) {
    JsonWriter json;
    json.BeginObject();
    json.String("text", "a \"b\" \\ \n\x1f\x7f\u202e 短信");
    json.Number("number", -12);
    json.BeginArray("list");
    json.Bool("", true);
    json.Null("");
    json.BeginObject();
    json.End();
    json.End();
    json.BeginArray("empty");
    json.End();
    json.End();
    EXPECT_EQ(json.Written(), "{\n"
                              "  \"text\": \"a \\\"b\\\" \\\\ \\n\\u001f\\u007f\\u202e 短信\",\n"
                              "  \"number\": -12,\n"
                              "  \"list\": [\n"
                              "    true,\n"
                              "    null,\n"
                              "    {}\n"
                              "  ],\n"
                              "  \"empty\": []\n"
                              "}\n");
}

} // namespace
} // namespace tarnex
