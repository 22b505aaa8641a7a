// Every dot graph of the golden dump-bb-cfg and dump-pi-cfg cases renders
// with Graphviz. The golden tests check that the program writes exactly
// these graphs (node addresses normalised), so together they show that the
// program's output is valid dot. Skipped when dot is not installed.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

namespace fs = std::filesystem;

bool HaveDot() {
  return std::system("command -v dot >/dev/null 2>&1") == 0;
}

TEST(DotRenderTest, GoldenGraphsRender) {
  if (!HaveDot()) GTEST_SKIP() << "dot is not installed";
  int rendered = 0;
  for (const char* subcommand : {"dump-bb-cfg", "dump-pi-cfg"}) {
    const fs::path root = fs::path(VESK_SOURCE_DIR) / "tests" / "cli" / subcommand;
    for (const fs::directory_entry& entry : fs::directory_iterator(root)) {
      const fs::path graph = entry.path() / "expected_stdout";
      std::ifstream status(entry.path() / "expected_status");
      int expectedStatus = -1;
      status >> expectedStatus;
      if (expectedStatus != 0 || !fs::exists(graph)) continue;
      const std::string command = "dot -Tsvg '" + graph.string() + "' -o /dev/null 2>&1";
      EXPECT_EQ(std::system(command.c_str()), 0) << graph;
      ++rendered;
    }
  }
  EXPECT_GE(rendered, 6);
}

}  // namespace
