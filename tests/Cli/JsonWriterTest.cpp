#include "Cli/JsonWriter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace kiv::Cli {
namespace {

using Layout = JsonWriter::Layout;

std::string sample(Layout layout) {
    JsonWriter json(layout);
    json.beginObject().field("name", "a").key("list").beginList().value(1).value(2).endList();
    json.key("parts").beginList().beginObject().field("x", 1).endObject().beginObject().endObject().endList();
    json.key("rows").beginList().beginList().value(1).endList().beginList().endList().endList();
    return json.endObject().take();
}

TEST(JsonWriter, WritesOneLineOrSeveral) {
    EXPECT_EQ(sample(Layout::line), R"({"name":"a","list":[1,2],"parts":[{"x":1},{}],"rows":[[1],[]]})"
                                    "\n");
    EXPECT_EQ(sample(Layout::pretty), R"({
  "name": "a",
  "list": [1, 2],
  "parts": [
    {
      "x": 1
    },
    {}
  ],
  "rows": [
    [1],
    []
  ]
}
)");
}

template <class T>
std::string written(T value) {
    std::string text = JsonWriter(Layout::line).value(value).take();
    text.pop_back();
    return text;
}

TEST(JsonWriter, WritesValues) {
    EXPECT_EQ(written(true), "true");
    EXPECT_EQ(written(nullptr), "null");
    EXPECT_EQ(written(std::optional<double>()), "null");
    EXPECT_EQ(written(std::int64_t(-9007199254740993)), "-9007199254740993");
    EXPECT_EQ(written(44100.0), "44100");
    EXPECT_EQ(written(0.1), "0.1");
    EXPECT_EQ(written(double(0.1f)), "0.10000000149011612");
    EXPECT_EQ(written(0.1f), "0.1");
    EXPECT_EQ(written(std::numeric_limits<float>::quiet_NaN()), "null");
    EXPECT_EQ(written(-std::numeric_limits<double>::infinity()), "null");
    EXPECT_EQ(written("a \"b\" \\ \n \x01 ⌘"), R"("a \"b\" \\ \n \u0001 ⌘")");
    EXPECT_EQ(written("\xFF!"), "\"\xEF\xBF\xBD!\"");
}

}  // namespace
}  // namespace kiv::Cli
