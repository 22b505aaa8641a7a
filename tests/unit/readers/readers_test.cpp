// Listing readers: token lines, label and instruction lines, and the framing
// of each layout, all read from in-memory text.
#include "readers/isa_reader.h"

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "util/analysis_error.h"

namespace vesk {
namespace {

using Strings = std::vector<std::string>;

std::vector<TokenLine> Lines(const std::string& text) {
  std::stringstream stream(text);
  return BaseIsaReader::GetLines(stream);
}

// One printed line per invocation: labels, name, operands and modifiers.
Strings Read(IsaReader& reader, const std::string& text, const InstructionSet& set) {
  std::stringstream stream(text);
  Strings printed;
  for (const Invocation& invocation : reader.Parse(stream, set)) {
    printed.push_back(invocation.ToString(true, true));
  }
  return printed;
}

TEST(GetLines, TokenizesAndDropsUnterminatedLastLine) {
  const auto lines = Lines("  s_nop 0 // wait\n// only comment\n   \nv_mov_b32\tv0, v1\nlast");
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines[0], (Strings{"s_nop", "0"}));
  EXPECT_TRUE(lines[1].empty());
  EXPECT_TRUE(lines[2].empty());
  EXPECT_EQ(lines[3], (Strings{"v_mov_b32\tv0,", "v1"}));  // a tab is part of a word
}

TEST(Tokenize, CutsAtTheFirstDoubleSlashAndSplitsAtBlanksOnly) {
  struct Case {
    std::string line;
    Strings expected;
  };
  const Case cases[] = {
      {"a/b // c", {"a/b"}},  // a single slash is an ordinary character
      {"a/ /b/", {"a/", "/b/"}},
      {"/ /x//y", {"/", "/x"}},
      {"x/", {"x/"}},
      {"//", {}},
      {"x //", {"x"}},
      {"\t a \t b\r", {"a", "\t", "b"}},  // trimmed at the ends, tabs kept inside
      {"a\tb  c", {"a\tb", "c"}},
      {"  ", {}},
      {"", {}},
  };
  for (const Case& c : cases) EXPECT_EQ(BaseIsaReader::Tokenize(c.line), c.expected) << c.line;
}

TEST(LineKinds, CommentsAndCompilerLabels) {
  EXPECT_TRUE(BaseIsaReader::IsComment({"; comment"}));
  EXPECT_TRUE(BaseIsaReader::IsComment({"a;b"}));
  EXPECT_FALSE(BaseIsaReader::IsComment({"s_nop", ";"}));
  EXPECT_TRUE(BaseIsaReader::IsLLCLabel({"main:", ";", "x"}));
  EXPECT_FALSE(BaseIsaReader::IsLLCLabel({"main:"}));
  EXPECT_FALSE(BaseIsaReader::IsLLCLabel({"main", ";"}));
}

TEST(ReadInstructions, LineRules) {
  const GFX10InstructionSet set;
  RawIsaReader raw;
  struct Case {
    std::string text;
    Strings expected;
  };
  const Case cases[] = {
      {"s_add_u32 s0, s1, 4\n", {"s_add_u32 s0, s1, 4"}},
      {"buffer_load_dword v1, v2, s[4:7], 0 offen offset:16\n",
       {"buffer_load_dword v1, v2, s[4:7], 0 offen offset:16"}},
      {"v_add_f32_e32 v3, v4, v5\n", {"v_add_f32 v3, v4, v5"}},
      {"v_add_f32_e64 v3, v4, v5\n", {"v_add_f32 v3, v4, v5"}},
      {"v_mov_b32_sdwa v0, v1\n", {"v_mov_b32 v0, v1"}},
      {"v_mov_b32_dpp v0, v1\n", {"v_mov_b32 v0, v1"}},
      {"v_cvt_e32_x v0\n", {"<unknown> v0"}},  // the suffix is found anywhere, cut at the end
      {"s_nop 0 ; wait\n", {"s_nop 0 ; wait"}},
      {"s_mov_b32 s0, s1, \n", {"s_mov_b32 s0, s1,"}},  // no empty argument
      {"label_0004:\nBB0_1:\n_L3:\ns_nop 0\n", {"label_0004, label_0_1, label_3: s_nop 0"}},
      {"_main:\ns_nop 0\n", {"label__main: s_nop 0"}},
      {"main: ; block\ns_nop 0\n", {"label_main: s_nop 0"}},
      {"odd:\n", {"<unknown> "}},  // a colon word that is no label is an instruction
      {".text\n", {"<unknown> "}},
      {"; comment\ntype(CS)\nfoo@bar\nshader main\n", {}},
      {"s_nop 0\nlabel_9:\n", {"s_nop 0"}},  // pending labels at the end are dropped
      {"a_op v1, v2 glc, v3 slc\n", {"<unknown> v1, v2, v3 slc"}},
      // Operands split at ", " only: a comma without a blank stays inside.
      {"s_mov_b32 s0,s1, s2\n", {"s_mov_b32 s0,s1, s2"}},
      {"s_mov_b32 s0, , s1\n", {"s_mov_b32 s0, s1"}},
      {"s_mov_b32 ,\n", {"s_mov_b32 ,"}},
      {"s_mov_b32 s0,\n", {"s_mov_b32 s0,"}},
      {"s_mov_b32 , s0\n", {"s_mov_b32 s0"}},
      {"s_mov_b32   s0,   s1\n", {"s_mov_b32 s0, s1"}},
      {"s_nop 0 a\t  b\n", {"s_nop 0 a\t b"}},  // a tab stays in its word
      {"s_nop;x\n", {}},
      {"s_nop//x\n", {"s_nop "}},
      {"x(y\n", {}},
  };
  for (const Case& c : cases) EXPECT_EQ(Read(raw, c.text, set), c.expected) << c.text;
}

TEST(RawReader, StopsAfterEndOfProgramAndFiller) {
  const GFX10InstructionSet set;
  RawIsaReader raw;
  struct Case {
    std::string text;
    Strings expected;
  };
  const Case cases[] = {
      {"s_mov_b32 s0, s1\nlabel_0004:\ns_endpgm\ns_nop 0\ns_endpgm\nv_mov_b32 v0, 0\n",
       {"s_mov_b32 s0, s1", "label_0004: s_endpgm ", "s_nop 0", "s_endpgm "}},
      {"s_load_dword s0, s[4:5], 0x0\ns_code_end\ns_endpgm\n", {"s_load_dword s0, s[4:5], 0x0"}},
      {"s_endpgm\n\ns_nop 0\n", {"s_endpgm "}},
      {"s_endpgm\nlabel_next:\ns_nop 0\n", {"s_endpgm ", "label_next: s_nop 0"}},
      {"s_nop 0\ns_endpgm", {"s_nop 0", "s_endpgm "}},  // unterminated last line is kept
  };
  for (const Case& c : cases) EXPECT_EQ(Read(raw, c.text, set), c.expected) << c.text;
}

TEST(FramedReaders, SelectTheirBlock) {
  const GFX10InstructionSet set;
  ShaderAnalyzerIsaReader sa;
  HSAILIsaReader hsail;
  ShaderDumpIsaReader dump;
  EXPECT_EQ(Read(sa, "shader main\ntype(CS)\ns_mov_b32 s0, s1\nend\ns_nop 0\n", set),
            (Strings{"s_mov_b32 s0, s1"}));
  EXPECT_EQ(Read(sa, "shader main\ns_nop 0\nend", set), (Strings{"s_nop 0"}));
  EXPECT_EQ(Read(hsail, "AMD Kernel Code for k\nDisassembly for k:\ns_endpgm\nend\n", set),
            (Strings{"s_endpgm "}));
  EXPECT_EQ(Read(dump,
                 ";--------\nasic(VI)\n; -------- Disassembly --------------------\n"
                 "v_add_f32_sdwa v0, v1, v2\nend\n",
                 set),
            (Strings{"v_add_f32 v0, v1, v2"}));
}

// A listing long enough for its records to be kept on huge pages reads like
// a short one: every line, its labels and its number.
TEST(RawReader, LongListingKeepsEveryLine) {
  const GFX10InstructionSet set;
  std::string text;
  const int count = 40000;
  for (int i = 0; i < count; ++i) {
    if (i % 1000 == 0) text += "label_" + std::to_string(i) + ":\n";
    text += "s_mov_b32 s" + std::to_string(i % 100) + ", " + std::to_string(i) + "\n";
  }
  std::stringstream stream(text);
  const std::vector<Invocation> invocations = RawIsaReader().Parse(stream, set);
  ASSERT_EQ(invocations.size(), static_cast<size_t>(count));
  for (int i : {0, 1, 999, 1000, 20001, count - 1}) {
    const std::string expected = (i % 1000 == 0 ? "label_" + std::to_string(i) + ": " : "") +
                                 "s_mov_b32 s" + std::to_string(i % 100) + ", " + std::to_string(i);
    EXPECT_EQ(invocations[i].ToString(), expected);
    EXPECT_EQ(invocations[i].GetSourceLine(), static_cast<uint32_t>(i + i / 1000 + 2));
  }
}

// Every layout numbers instructions by their line in the whole text, framing
// and skipped lines included, so errors and reports can point into the file.
TEST(SourceLines, CountEveryLineOfTheText) {
  const GFX10InstructionSet set;
  RawIsaReader raw;
  ShaderAnalyzerIsaReader sa;
  HSAILIsaReader hsail;
  ShaderDumpIsaReader dump;
  struct Case {
    IsaReader& reader;
    std::string text;
    std::vector<uint32_t> lines;
  };
  const Case cases[] = {
      {raw, "; head\n\nlabel_a:\ns_nop 0\n  // note\nv_mov_b32 v0, v1\ns_endpgm", {4, 6, 7}},
      {sa, "x\nshader main\ntype(CS)\ns_nop 0\n\ns_endpgm\nend\n", {4, 6}},
      {hsail, "AMD Kernel Code for k\n\nDisassembly for k:\ns_nop 0\ns_endpgm\nend\n", {4, 5}},
      {dump, ";--------\n; -------- Disassembly --------------------\n\ns_endpgm\nend\n", {4}},
  };
  for (const Case& c : cases) {
    std::stringstream stream(c.text);
    std::vector<uint32_t> lines;
    for (const Invocation& invocation : c.reader.Parse(stream, set)) {
      lines.push_back(invocation.GetSourceLine());
    }
    EXPECT_EQ(lines, c.lines) << c.text;
  }
}

TEST(FramedReaders, MismatchesThrowWithTheLineNumber) {
  const GFX10InstructionSet set;
  struct Case {
    IsaReader* reader;
    std::string text;
    std::string message;
  };
  ShaderAnalyzerIsaReader sa;
  HSAILIsaReader hsail;
  const Case cases[] = {
      {&sa, "end\n", "Mismatch shader/end in line 1"},
      {&sa, "shader a\n\nshader b\n", "Mismatch shader/end in line 3"},
      {&hsail, "Disassembly for k:\nWaiting for x\nend\n",
       "Mismatched Disassembly for/end in line 2"},
      {&hsail, "end\n", "Mismatched Disassembly for/end in line 1"},
      {&hsail, "Disassembly of k\n", "Mismatched Disassembly for/end in line 1"},
  };
  for (const Case& c : cases) {
    std::stringstream stream(c.text);
    try {
      c.reader->Parse(stream, set);
      ADD_FAILURE() << "no error for " << c.text;
    } catch (const std::runtime_error& error) {
      EXPECT_EQ(std::string(error.what()), c.message);
    }
  }
}

TEST(Readers, UnreadableRegisterNumberFailsAtItsLine) {
  const GFX10InstructionSet set;
  RawIsaReader raw;
  ShaderAnalyzerIsaReader sa;
  AutoIsaReader detect;
  struct Case {
    IsaReader& reader;
    std::string text;
    uint32_t line;
    std::string message;
  };
  const Case cases[] = {
      {raw, "s_nop 0\n\nv_mov_b32 v99999999999, v1\n", 3,
       "register index in 'v99999999999' does not fit 32 bits"},
      {raw, "label_1:\nv_add_f32 v0, abs(v[x:3]), v1\n", 2,
       "register range bound in 'abs(v[x:3])' is not a number"},
      {sa, "shader main\ns_nop 0\ns_mov_b64 s[0?3], 0\nend\n", 3,
       "register range bound in 's[0?3]' is not a number"},
      {detect, "// x\ns_endpgm v[0:99999999999]\n", 2,
       "register range bound in 'v[0:99999999999]' does not fit 32 bits"},
  };
  for (const Case& c : cases) {
    std::stringstream stream(c.text);
    try {
      c.reader.Parse(stream, set);
      ADD_FAILURE() << "no error for " << c.text;
    } catch (const ListingError& error) {
      EXPECT_EQ(error.Line(), c.line) << c.text;
      EXPECT_EQ(std::string(error.what()), c.message);
    }
  }
}

TEST(ShaderDump, ExtractsTheGenerationName) {
  struct Case {
    Strings tokens;
    std::string name;
  };
  const Case cases[] = {
      {{"asic(VI)"}, "gfx8"},   {{"asic(CI)"}, "gfx7"},       {{"asic(SI)"}, "gfx7"},
      {{"asic(GFX9)"}, "gfx9"}, {{"asic(GFX10_1)"}, "gfx10"}, {{"asic(GFX1030)"}, "gfx1030"},
      {{"asic()"}, ""},         {{"asic(GFX9"}, ""},          {{"xasic(GFX9)"}, ""}};
  for (const Case& c : cases) {
    EXPECT_EQ(ShaderDumpIsaReader::ExtractInstructionSet(c.tokens), c.name) << c.tokens[0];
  }
}

TEST(AutoReader, DetectsTheLayout) {
  const GFX10InstructionSet set;
  AutoIsaReader reader;
  struct Case {
    std::string text;
    Strings expected;
  };
  const Case cases[] = {
      // HSAIL tool: only the disassembly block.
      {"AMD Kernel Code for k\ns_nop 1\nDisassembly for k:\ns_nop 0\nend\n", {"s_nop 0"}},
      // Driver dump marker anywhere in the text.
      {"\nx\n; -------- Disassembly --------------------\ns_nop 2\nend\n", {"s_nop 2"}},
      // A line starting with "shader" makes a shader-analyzer listing.
      {"s_nop 3\nshader k\ns_nop 4\n", {"s_nop 4"}},
      {"s_nop 5\ns_endpgm\n", {"s_nop 5", "s_endpgm "}},
  };
  for (const Case& c : cases) EXPECT_EQ(Read(reader, c.text, set), c.expected) << c.text;
}

}  // namespace
}  // namespace vesk
