// String helpers: the parsing and splitting rules the readers depend on.
#include "util/string_helpers.h"

#include <gtest/gtest.h>

#include <climits>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace vesk {
namespace {

TEST(ParseInt, ReadsLeadingNumberAndRejectsNonNumbers) {
  EXPECT_EQ(ParseInt("  -42xyz"), -42);
  EXPECT_EQ(ParseInt("12abc"), 12);
  EXPECT_EQ(ParseInt("+7"), 7);
  EXPECT_THROW(ParseInt("x"), std::invalid_argument);
  EXPECT_THROW(ParseInt(""), std::invalid_argument);
  EXPECT_THROW(ParseInt("2147483648"), std::out_of_range);
  EXPECT_EQ(ParseInt("0x10"), 0);  // no hexadecimal form
}

TEST(Trim, RemovesAllCWhiteSpaceAtBothEnds) {
  EXPECT_EQ(Trim(" \t a b \r\n"), "a b");
  EXPECT_EQ(Trim(" \t\v\f "), "");
  EXPECT_EQ(Trim("x"), "x");
}

TEST(AffixTests, FollowTheirListRules) {
  struct Case {
    const char* what;
    bool actual;
    bool expected;
  };
  const Case cases[] = {
      {"ends: longer suffix first stops the search", EndsWithAny("ab", {"abc", "b"}), false},
      {"ends: shorter suffix first matches", EndsWithAny("ab", {"b", "abc"}), true},
      {"ends: empty suffix matches", EndsWithAny("ab", {""}), true},
      {"ends: empty list", EndsWithAny("ab", {}), false},
      {"starts: longer prefix skipped", StartsWithAny("ab", {"abc", "a"}), true},
      {"starts: empty list", StartsWithAny("ab", {}), false},
      {"contains: later needle", ContainsAny("v_add_f32", {"_mul", "_add"}), true},
      {"contains: empty needle", ContainsAny("x", {""}), true},
      {"contains: none", ContainsAny("s_nop", {"_mov", "s_or"}), false},
      {"starts with: empty prefix", StartsWith("abc", ""), true},
      {"starts with: text shorter", StartsWith("ab", "abc"), false},
  };
  for (const Case& c : cases) EXPECT_EQ(c.actual, c.expected) << c.what;
}

TEST(LeftPad, RightAlignsWithoutCutting) {
  EXPECT_EQ(LeftPad(7, 3), "  7");
  EXPECT_EQ(LeftPad(1234, 2), "1234");
  EXPECT_EQ(LeftPad(0, 0), "0");
  EXPECT_EQ(LeftPad(-5, 4), "  -5");
}

TEST(LeftPad, AppendedFormEqualsTheString) {
  const std::pair<int, int> cases[] = {{7, 3},       {1234, 2},    {0, 0},      {-5, 4},
                                       {-5, 1},      {99, 6},      {100000, 6}, {INT_MAX, 3},
                                       {INT_MIN, 3}, {INT_MIN, 14}};
  for (const auto& [value, width] : cases) {
    std::string text = "x";
    AppendLeftPadded(text, value, width);
    EXPECT_EQ(text, "x" + LeftPad(value, width)) << value << " width " << width;
  }
}

TEST(Split, ResumesOneCharacterAfterEachMatch) {
  using Pieces = std::vector<std::string>;
  struct Case {
    std::string text;
    std::string delimiter;
    SplitOptions options;
    Pieces expected;
  };
  const Case cases[] = {
      {"a b", " ", SkipEmpty, {"a", "b"}},
      {"  a", " ", SkipEmpty, {"a"}},
      {"  a", " ", KeepEmpty, {"", "", "a"}},
      {"", ",", KeepEmpty, {""}},
      {"", ",", SkipEmpty, {}},
      {"a,,b", ",", KeepEmpty, {"a", "", "b"}},
      {"a,", ",", KeepEmpty, {"a", ""}},
      // The blank of ", " starts every later piece; the reader trims it.
      {"v1, v2, s[0:1]", ", ", KeepEmpty, {"v1", " v2", " s[0:1]"}},
      {"a, , b", ", ", KeepEmpty, {"a", " ", " b"}},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(Split(c.text, c.delimiter, c.options), c.expected) << "'" << c.text << "'";
  }
}

TEST(FindText, AgreesWithTheStandardSearch) {
  using namespace std::string_view_literals;
  struct Case {
    std::string_view text;
    std::string_view needle;
    size_t from;
  };
  const Case cases[] = {
      {"shader main", "shader", 0},
      {"x shader", "shader", 1},
      {"x shader", "shader", 3},
      {"shade", "shader", 0},
      {"aaaa", "aaa", 1},
      {"aaaa", "aaa", 2},
      {"abc", "", 0},
      {"abc", "", 3},
      {"abc", "", 4},
      {"abc", "c", 3},
      {"", "a", 0},
      {"ab\0cd"sv, "\0c"sv, 0},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(FindText(c.text, c.needle, c.from), c.text.find(c.needle, c.from))
        << "'" << c.text << "' '" << c.needle << "' from " << c.from;
  }
}

TEST(Join, SeparatesElements) {
  const std::vector<std::string> none;
  const std::vector<std::string> three = {"a", "b", "c"};
  EXPECT_EQ(Join(", ", none.begin(), none.end()), "");
  EXPECT_EQ(Join(", ", three.begin(), three.end()), "a, b, c");
  EXPECT_EQ(ToLower("GFX10_A"), "gfx10_a");
}

}  // namespace
}  // namespace vesk
