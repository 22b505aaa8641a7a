// Whole-text reading: files that cannot report their size up front (FIFOs,
// pipes) read whole, and paths that cannot be read to their end give nothing.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

#include "util/read_text.h"

namespace vesk {
namespace {

namespace fs = std::filesystem;

class ReadTextTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = fs::path(::testing::TempDir()) /
           ("vesk_read_text_" + std::to_string(::getpid()) + "_" +
            ::testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::remove_all(dir_);
    fs::create_directories(dir_);
  }
  void TearDown() override { fs::remove_all(dir_); }

  std::string Write(const std::string& name, const std::string& text) {
    const std::string path = (dir_ / name).string();
    std::ofstream(path, std::ios::binary) << text;
    return path;
  }

  fs::path dir_;
};

// Longer than the first read chunk and not a multiple of any chunk size.
std::string LongText() {
  std::string text;
  for (int i = 0; text.size() < 300000; ++i) {
    text += "v_add_f32 v" + std::to_string(i % 256) + ", v1, v2\n";
  }
  return text;
}

// Several megabytes: large enough for the reading buffer to be given huge
// pages, which must not change what is read.
std::string LargeText() {
  std::string text;
  text.reserve(5u << 20);
  for (int i = 0; text.size() < (5u << 20) + 12345; ++i) {
    text += "s_mov_b32 s" + std::to_string(i % 100) + ", " + std::to_string(i) + "\n";
  }
  return text;
}

TEST_F(ReadTextTest, RegularFilesReadWhole) {
  for (const std::string& text : {std::string(), std::string("s_endpgm"), std::string("a\0b\n", 4),
                                  LongText(), LargeText()}) {
    const std::optional<std::string> read = ReadFile(Write("listing.isa", text));
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(*read, text);
  }
}

TEST_F(ReadTextTest, FifoReadsWhole) {
  for (const std::string& text : {std::string(), std::string("s_endpgm\n"), LongText()}) {
    const std::string path = (dir_ / "fifo").string();
    fs::remove(path);
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    // The writer blocks in open until the reader opens the other end.
    std::thread writer([&] { std::ofstream(path, std::ios::binary) << text; });
    const std::optional<std::string> read = ReadFile(path);
    writer.join();
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(read->size(), text.size());
    EXPECT_EQ(*read, text);
  }
}

TEST_F(ReadTextTest, PathsThatCannotBeReadGiveNothing) {
  const std::string file = Write("listing.isa", "s_endpgm\n");
  for (const std::string& path : {dir_.string(), (dir_ / "missing.isa").string(), file + "/",
                                  file + "/x.isa", std::string()}) {
    EXPECT_FALSE(ReadFile(path).has_value()) << path;
  }
}

TEST(ReadAll, AppendsToWhatIsThere) {
  std::istringstream in(LongText());
  std::string text = "head\n";
  EXPECT_TRUE(ReadAll(in, text));
  EXPECT_EQ(text, "head\n" + LongText());
}

}  // namespace
}  // namespace vesk
