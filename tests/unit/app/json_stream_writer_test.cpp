// The streamed JSON writer lays documents out exactly as the in-memory
// writer does, whichever containers are streamed and which are added whole.
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include <nlohmann/json.hpp>

#include "app/json_report.h"

namespace vesk {
namespace {

// Streams `value`: containers down to `depth` are opened and closed, deeper
// ones are added as finished members.
void Stream(JsonStreamWriter& writer, const std::string& key, const JsonDocument& value,
            int depth) {
  if (!value.is_structured() || depth < 0) {
    writer.Add(key, value);
    return;
  }
  if (value.is_object()) {
    writer.BeginObject(key);
    for (auto it = value.begin(); it != value.end(); ++it) {
      Stream(writer, it.key(), *it, depth - 1);
    }
  } else {
    writer.BeginArray(key);
    for (const JsonDocument& member : value) Stream(writer, "", member, depth - 1);
  }
  writer.End();
}

std::string Streamed(const JsonDocument& document, int depth) {
  std::ostringstream out;
  JsonStreamWriter writer(out);
  Stream(writer, "", document, depth);
  return out.str();
}

std::string Whole(const JsonDocument& document) {
  std::ostringstream out;
  WriteJsonDocument(out, document);
  return out.str();
}

JsonDocument Row(int line, const std::string& text) {
  return JsonDocument{{"line", line},
                      {"source_line", nullptr},
                      {"instruction", text},
                      {"cycles", 0},
                      {"unbounded", false}};
}

JsonDocument Report(JsonDocument programs) {
  return JsonDocument{{"vesk", "3.1.0"}, {"isa", "gfx10"}, {"programs", std::move(programs)}};
}

TEST(JsonStreamWriter, LaysOutAsTheWholeDocument) {
  const std::string longName(120, 'f');
  JsonDocument manyRows = JsonDocument::array();
  for (int i = 1; i <= 40; ++i) manyRows.push_back(Row(i, "v_add_f32 v0, v1, v2"));
  JsonDocument longScalars = JsonDocument::array();
  for (int i = 0; i < 60; ++i) longScalars.push_back(i);

  const JsonDocument cases[] = {
      // Everything fits on one line.
      Report(JsonDocument::array({JsonDocument{{"function", nullptr}, {"max_live", 0}}})),
      // A one-row table short enough for one line, inside a long document.
      Report(JsonDocument::array(
          {JsonDocument{{"function", "k"}, {"rows", JsonDocument::array({Row(1, "s_endpgm")})}}})),
      // A table of many rows.
      Report(JsonDocument::array({JsonDocument{{"function", nullptr}, {"rows", manyRows}}})),
      // Flat programs stay on one line however long; others break.
      Report(JsonDocument::array(
          {JsonDocument{{"function", longName}, {"max_live", 3}, {"allocated", 4}},
           JsonDocument{{"function", "b"}, {"live", longScalars}},
           JsonDocument{{"function", "c"}, {"rows", JsonDocument::array()}, {"counts", {}}},
           JsonDocument{{"function", "d"}, {"rows", manyRows}}})),
      // A long list of numbers as an object member, and arrays in arrays.
      JsonDocument{{"list", longScalars},
                   {"nested", JsonDocument::array({longScalars, JsonDocument::array({manyRows})})}},
      // Long keys and escaped text.
      JsonDocument{{longName, "a\"b\\c\n"}, {"x", JsonDocument::object()}},
  };
  for (const JsonDocument& document : cases) {
    const std::string expected = Whole(document);
    for (int depth = 0; depth <= 4; ++depth) {
      EXPECT_EQ(Streamed(document, depth), expected) << "depth " << depth << "\n" << expected;
    }
  }
}

TEST(JsonStreamWriter, WritesLongDocumentsInPieces) {
  std::ostringstream out;
  JsonStreamWriter writer(out);
  writer.BeginObject();
  writer.BeginArray("rows");
  JsonDocument rows = JsonDocument::array();
  const std::string text(200, 'v');
  for (int i = 0; i < 10000 && !writer.Written(); ++i) {
    writer.Add(Row(i, text));
    rows.push_back(Row(i, text));
  }
  // Part of the document left before it ended, and no more than a piece is
  // held back.
  ASSERT_TRUE(writer.Written());
  const size_t before = out.str().size();
  EXPECT_GE(before, size_t{1} << 20);
  writer.End();
  writer.End();
  EXPECT_EQ(out.str(), Whole(JsonDocument{{"rows", rows}}));
  EXPECT_LT(before, out.str().size());
}

}  // namespace
}  // namespace vesk
