// The command-line application: global options, the subcommands, input and
// output streams, and the dispatch to exactly one analysis task.
#pragma once

#include <fstream>
#include <memory>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "app/base_task.h"
#include "isa/instruction_set.h"
#include "readers/isa_reader.h"

class VeskApp : public CLI::App {
 public:
  VeskApp();
  // Runs the chosen subcommand; false when the analysis failed.
  bool Execute();
  // How errors name the input: its path, or "<stdin>" for "-".
  std::string InputName() const { return inputPath == "-" ? "<stdin>" : inputPath; }

 private:
  void ConfigureCommands();
  void ApplyPathsInCommandLineOrder();
  bool CreateInputStream();
  void CreateOutputStream();
  // The reader of the chosen layout; for auto, the one ChooseGeneration
  // detected when it ran.
  std::unique_ptr<vesk::IsaReader> CreateIsaReader();
  void PrintISAInstructions(const vesk::InstructionSet& instructionSet);
  std::unique_ptr<BaseVeskAppTask> CreateTask();
  // The generation to analyse for: --isa when given, else the processor an
  // LLVM listing names, else the default.
  std::string ChooseGeneration();
  // With --function, keeps only that program; an unknown name fails the run.
  void SelectFunction(std::vector<vesk::ListingProgram>& programs) const;
  // --format json for a subcommand without a JSON report fails the run
  // before any output is opened.
  void CheckFormat() const;
  // The wave size one program runs with: -w, else what the listing states,
  // else the generation's own (wave32 on gfx10, wave64 before).
  int ChooseWaveSize(const vesk::ProgramAttributes& attributes, int generation) const;
  bool JsonFormat() const { return format == "json"; }
  // The subcommand that runs: the first given in the order CreateTask tests.
  const CLI::App* RunningCommand() const;
  // stall-cycles: only the exact text "64" selects wave64.
  bool StallWave64() const { return waveSize == "64"; }

  std::string inputPath;
  std::string outputPath;
  std::string isa;
  std::string inputType;
  std::string functionName;
  std::unique_ptr<vesk::IsaReader> detectedReader;
  std::string format;
  CLI::Option* isaOption = nullptr;
  std::stringstream inputStream;
  std::ostream* outputStream = nullptr;
  std::ofstream outputFile;

  CLI::App* dumpBbCfgCommand = nullptr;
  CLI::Option* compactFlag = nullptr;
  CLI::App* dumpPiCfgCommand = nullptr;
  CLI::App* analyseLivenessCommand = nullptr;
  CLI::Option* summaryFlag = nullptr;
  CLI::Option* removeStartLinesFlag = nullptr;
  CLI::App* opcodeHistogramCommand = nullptr;
  std::string groupBy;
  CLI::App* printInstructionsCommand = nullptr;
  CLI::App* stallCyclesCommand = nullptr;
  std::string waveSize;
  CLI::Option* gapsFlag = nullptr;
  CLI::App* summaryCommand = nullptr;
  std::string summaryWaveSize;
};
