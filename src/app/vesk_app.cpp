// Command-line declaration and the run of one analysis.
#include "app/vesk_app.h"

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>

#include <fmt/format.h>

#include "app/cfg_dumper.h"
#include "app/json_report.h"
#include "app/liveness_analyzer.h"
#include "app/opcode_histogram_dumper.h"
#include "app/stall_cycle_analyzer.h"
#include "app/summary_reporter.h"
#include "app/version.h"
#include "readers/llvm_listing_reader.h"
#include "readers/llvm_processors.h"
#include "util/analysis_error.h"
#include "util/fatal_exit.h"
#include "util/read_text.h"
#include "util/string_helpers.h"

namespace {

// Declares a flag whose value is its count on the command line.
CLI::Option* AddFlag(CLI::App* command, const char* name, const std::string& description) {
  return command->add_flag(name, description);
}

// "--isa" takes a generation name, or an LLVM processor name that stands for
// its generation (gfx1010 is gfx10); letter case does not matter. Any other
// name fails the command line with the allowed set, and with the processors
// when the name looks like one.
std::string CheckIsaName(std::string& value) {
  const std::string lower = vesk::ToLower(value);
  for (const char* generation : {"gfx7", "gfx8", "gfx9", "gfx10"}) {
    if (lower == generation) {
      value = generation;
      return {};
    }
  }
  if (const std::string generation = vesk::GenerationOfProcessor(lower); !generation.empty()) {
    value = generation;
    return {};
  }
  std::string message = value + " not in {gfx7,gfx8,gfx9,gfx10}";
  if (lower.starts_with("gfx") && lower.size() > 5) {
    message += fmt::format(", nor an LLVM processor with an instruction table ({})",
                           vesk::SupportedProcessorNames());
  }
  return message;
}

}  // namespace

VeskApp::VeskApp() : CLI::App("Vesk 3.0", "") {
  set_help_flag("-h,--help", "Print this help message and exit");
  isa = "gfx10";
  inputType = "auto";
  format = "text";
  isaOption =
      add_option("--isa,-i", isa, "")
          ->transform(CLI::Validator(CheckIsaName, "{gfx7,gfx8,gfx9,gfx10,gfx700..gfx1013}"));
  add_option("--input-type, -t", inputType, "")
      ->transform(CLI::IsMember({"hsail", "sc", "sa", "raw", "auto", "llvm"}, CLI::ignore_case));
  add_option("--function", functionName,
             "Analyse only this function of a listing that holds several (LLVM input)");
  add_option("--format", format, "Report form: text (default) or json")
      ->transform(CLI::IsMember({"text", "json"}, CLI::ignore_case));
  set_version_flag("--version", "vesk " VESK_VERSION, "Print the version and exit");
  ConfigureCommands();
}

void VeskApp::ConfigureCommands() {
  auto addPaths = [this](CLI::App* command, bool withInput) {
    if (withInput) command->add_option("input", inputPath, "")->required();
    command->add_option("output", outputPath, "")->required();
  };

  dumpBbCfgCommand = add_subcommand("dump-bb-cfg", "Dump the basic-block CFG to a dot file.");
  addPaths(dumpBbCfgCommand, true);
  compactFlag = AddFlag(dumpBbCfgCommand, "--compact,-c", "Compact output");

  dumpPiCfgCommand = add_subcommand("dump-pi-cfg", "Dump the per-instruction CFG to a dot file.");
  addPaths(dumpPiCfgCommand, true);

  analyseLivenessCommand =
      add_subcommand("analyse-liveness", "Write per-instruction VGPR liveness and usage.");
  addPaths(analyseLivenessCommand, true);
  summaryFlag = AddFlag(analyseLivenessCommand, "--summary,-s", "Write only the summary line");
  removeStartLinesFlag = AddFlag(
      analyseLivenessCommand, "--remove-start-lines,-r",
      "Remove all lines that appear to already be alive at program start, even before the first "
      "write");

  opcodeHistogramCommand = add_subcommand(
      "opcode-histogram", "Write a histogram showing how often each opcode has been used.");
  addPaths(opcodeHistogramCommand, true);
  opcodeHistogramCommand->add_option("--group,-g", groupBy, "Group instructions by type")
      ->check(CLI::IsMember({"instruction-class", "operand-size"}));

  printInstructionsCommand =
      add_subcommand("print-instructions", "Write a list of all instructions included in the ISA.");
  addPaths(printInstructionsCommand, false);

  stallCyclesCommand = add_subcommand(
      "stall-cycles", "Run the stall-cycle analysis. Currently only available for GFX10 targets.");
  addPaths(stallCyclesCommand, true);
  stallCyclesCommand->add_option("-w", waveSize, "32, 64");
  gapsFlag = AddFlag(stallCyclesCommand, "--gaps,-g", "Shows the actual stalls as separate lines.");

  summaryCommand = add_subcommand(
      "summary", "Write register pressure, occupancy and (GFX10) the worst stalls on one screen.");
  addPaths(summaryCommand, true);
  summaryCommand
      ->add_option("-w", summaryWaveSize,
                   "Wave size; default: the listing's, else 32 on gfx10 and 64 before")
      ->check(CLI::IsMember({"32", "64"}));

  require_subcommand(1, 0);
}

bool VeskApp::CreateInputStream() {
  if (inputPath.empty()) return true;
  // The input is streamed to its end rather than sized up front, so pipes,
  // FIFOs and /dev/fd paths read like plain files. A path that cannot be
  // read to its end (a directory, no permission) counts as missing.
  std::optional<std::string> text;
  if (inputPath == "-") {
    // Standard input goes through the C stream, which reports a failed read
    // (a directory redirected in) only through its error flag.
    text.emplace();
    if (!vesk::ReadAll(std::cin, *text) || std::ferror(stdin)) text.reset();
  } else {
    text = vesk::ReadFile(inputPath);
  }
  if (!text) {
    std::cerr << "The specified input file does not exist." << std::endl;
    return false;
  }
  inputStream.str(std::move(*text));
  return true;
}

void VeskApp::CreateOutputStream() {
  if (outputPath == "-") {
    outputStream = &std::cout;
    return;
  }
  // A failed open is deliberately silent: the report is simply lost.
  outputFile.open(outputPath, std::ios::out | std::ios::trunc);
  outputStream = &outputFile;
}

std::unique_ptr<vesk::IsaReader> VeskApp::CreateIsaReader() {
  if (inputType == "hsail") return std::make_unique<vesk::HSAILIsaReader>();
  if (inputType == "sc") return std::make_unique<vesk::ShaderDumpIsaReader>();
  if (inputType == "sa") return std::make_unique<vesk::ShaderAnalyzerIsaReader>();
  if (inputType == "raw") return std::make_unique<vesk::RawIsaReader>();
  if (inputType == "llvm") return std::make_unique<vesk::LlvmIsaReader>();
  if (detectedReader) return std::move(detectedReader);
  return std::make_unique<vesk::AutoIsaReader>();
}

void VeskApp::PrintISAInstructions(const vesk::InstructionSet& instructionSet) {
  *outputStream << "Instructions:\n";
  for (const vesk::Instruction& instruction : instructionSet) {
    *outputStream << instruction.GetName() << std::endl;
  }
}

void VeskApp::ApplyPathsInCommandLineOrder() {
  // Every subcommand binds the same two paths, but CLI11 stores them in
  // declaration order; with two subcommands on one line the paths given last
  // must win, so store them again in the order the subcommands were given.
  for (CLI::App* command : get_subcommands()) {
    if (CLI::Option* input = command->get_option_no_throw("input"); input && input->count()) {
      inputPath = input->as<std::string>();
    }
    if (CLI::Option* output = command->get_option_no_throw("output"); output && output->count()) {
      outputPath = output->as<std::string>();
    }
  }
}

const CLI::App* VeskApp::RunningCommand() const {
  // With several subcommands on one line, the first of this order runs
  // (print-instructions needs no input and goes before every analysis).
  for (const CLI::App* command :
       {printInstructionsCommand, analyseLivenessCommand, dumpBbCfgCommand, dumpPiCfgCommand,
        opcodeHistogramCommand, stallCyclesCommand, summaryCommand}) {
    if (command->parsed()) return command;
  }
  return stallCyclesCommand;
}

std::unique_ptr<BaseVeskAppTask> VeskApp::CreateTask() {
  const CLI::App* command = RunningCommand();
  if (command == analyseLivenessCommand) {
    const uint32_t options =
        (summaryFlag->count() ? AnalyzeLiveness::summaryOnly : 0u) +
        (removeStartLinesFlag->count() ? AnalyzeLiveness::removeStartLines : 0u);
    return std::make_unique<LivenessAnalyzer>(inputStream, outputStream,
                                              static_cast<AnalyzeLiveness::Options>(options));
  }
  if (command == dumpBbCfgCommand) {
    return std::make_unique<CFGDumper>(inputStream, outputStream,
                                       compactFlag->count() ? CompactBasicBlocks : BasicBlocks);
  }
  if (command == dumpPiCfgCommand) {
    return std::make_unique<CFGDumper>(inputStream, outputStream, PerInstruction);
  }
  if (command == opcodeHistogramCommand) {
    return std::make_unique<OpcodeHistogramDumper>(inputStream, outputStream, groupBy);
  }
  if (command == summaryCommand)
    return std::make_unique<SummaryReporter>(inputStream, outputStream);
  // Only the exact text "64" selects wave64; anything else is wave32.
  return std::make_unique<StallCycleAnalyzer>(inputStream, outputStream, StallWave64(),
                                              gapsFlag->count() != 0);
}

void VeskApp::CheckFormat() const {
  if (!JsonFormat()) return;
  const CLI::App* command = RunningCommand();
  const auto refuse = [command](const char* why) {
    throw vesk::AnalysisError(
        fmt::format("--format json is not available for {} ({})", command->get_name(), why));
  };
  if (command == dumpBbCfgCommand || command == dumpPiCfgCommand) refuse("it writes a dot graph");
  if (command == printInstructionsCommand) refuse("it writes a plain list");
  if (command == stallCyclesCommand && gapsFlag->count()) {
    throw vesk::AnalysisError(
        "stall-cycles --gaps draws stalls as text rows; its JSON form has the cycles of every "
        "row: leave out --gaps");
  }
}

int VeskApp::ChooseWaveSize(const vesk::ProgramAttributes& attributes, int generation) const {
  if (summaryWaveSize == "64") return 64;
  if (summaryWaveSize == "32") {
    if (generation < 10) {
      throw vesk::AnalysisError(
          fmt::format("-w 32: gfx{} runs waves of 64 work-items only", generation));
    }
    return 32;
  }
  if (generation < 10) return 64;
  return attributes.waveSize.value_or(32);
}

std::string VeskApp::ChooseGeneration() {
  // Only an LLVM assembly listing names its processor (.amdgcn_target), and
  // an explicit --isa wins over it.
  if (isaOption->count() || printInstructionsCommand->parsed()) return isa;
  // The layout found here is the one the listing is read in; keep it so the
  // text is scanned for its markers once.
  if (inputType == "auto") detectedReader = vesk::AutoIsaReader::Detect(inputStream);
  const bool llvm =
      inputType == "llvm" || dynamic_cast<vesk::LlvmIsaReader*>(detectedReader.get()) != nullptr;
  if (!llvm) return isa;
  const vesk::StatedProcessor stated = vesk::FindStatedProcessor(inputStream.view());
  if (stated.line == 0) return isa;
  const std::string generation = vesk::GenerationOfProcessor(stated.name);
  if (generation.empty()) {
    throw vesk::ListingError(
        stated.line, fmt::format("target processor '{}' has no instruction table; supported: {} "
                                 "(--isa chooses a table explicitly)",
                                 stated.name, vesk::SupportedProcessorNames()));
  }
  return generation;
}

void VeskApp::SelectFunction(std::vector<vesk::ListingProgram>& programs) const {
  if (functionName.empty()) return;
  std::vector<std::string> names;
  for (vesk::ListingProgram& program : programs) {
    if (!program.name.empty() && program.name == functionName) {
      vesk::ListingProgram selected = std::move(program);
      programs.clear();
      programs.push_back(std::move(selected));
      return;
    }
    if (!program.name.empty()) names.push_back(program.name);
  }
  throw vesk::AnalysisError(
      names.empty()
          ? fmt::format("No function named '{}': the listing has no named functions.", functionName)
          : fmt::format("No function named '{}'; the listing holds: {}.", functionName,
                        vesk::Join(", ", names.begin(), names.end())));
}

bool VeskApp::Execute() {
  ApplyPathsInCommandLineOrder();
  CheckFormat();
  if (!CreateInputStream()) return false;
  CreateOutputStream();

  std::unique_ptr<vesk::InstructionSet> instructionSet =
      vesk::CreateInstructionSet(ChooseGeneration());
  if (!instructionSet) return false;

  if (printInstructionsCommand->parsed()) {
    PrintISAInstructions(*instructionSet);
    return true;
  }

  std::unique_ptr<vesk::IsaReader> reader = CreateIsaReader();
  if (!reader) return false;

  // A listing of several functions is analysed one function at a time, in
  // listing order; the report of each is headed by the function's name (a
  // comment line in dot output, so the file still renders). Layouts that
  // hold one unnamed program print their report alone.
  std::vector<vesk::ListingProgram> programs = reader->ReadPrograms(inputStream, *instructionSet);
  // The programs own everything they need from the text; its memory goes
  // back before the analyses build their graphs.
  std::stringstream().swap(inputStream);
  SelectFunction(programs);
  const bool json = JsonFormat();
  const bool headers =
      !json && functionName.empty() && !programs.empty() && !programs[0].name.empty();
  const bool dot = dumpBbCfgCommand->parsed() || dumpPiCfgCommand->parsed();
  if (programs.empty()) programs.emplace_back();

  // In JSON form every program adds its object to one document, written as
  // it is formed; a failure writes its message alone and no document.
  const int generation = static_cast<int>(instructionSet->GetVersion() >> 16);
  const bool summary = RunningCommand() == summaryCommand;
  const bool stall = RunningCommand() == stallCyclesCommand;
  std::optional<vesk::JsonStreamWriter> writer;
  if (json) {
    writer.emplace(*outputStream);
    writer->BeginObject();
    const vesk::JsonDocument header = vesk::JsonReportHeader(*instructionSet);
    for (auto it = header.begin(); it != header.end(); ++it) writer->Add(it.key(), *it);
    if (summary) {
      // Programs of one listing may state different wave sizes.
      const int first = ChooseWaveSize(programs[0].attributes, generation);
      bool common = true;
      for (const vesk::ListingProgram& program : programs) {
        common = common && ChooseWaveSize(program.attributes, generation) == first;
      }
      writer->Add("wave_size", common ? vesk::JsonDocument(first) : vesk::JsonDocument(nullptr));
    } else if (stall) {
      writer->Add("wave_size", StallWave64() ? 64 : 32);
    }
    writer->BeginArray("programs");
  }
  // A document too long to keep in memory may have been partly written when
  // a later program fails; an output file is then emptied again, so that it
  // holds the failure's message alone as for a short document.
  const auto discardDocument = [&] {
    const bool written = writer && writer->Written();
    writer.reset();
    std::error_code error;
    if (!written || outputPath == "-" || !std::filesystem::is_regular_file(outputPath, error)) {
      return;
    }
    outputFile.close();
    outputFile.open(outputPath, std::ios::out | std::ios::trunc);
  };
  // Fatal listing conditions are caught for the same reason, and then end
  // the run as they would have.
  const vesk::FatalExitHandler previousHandler =
      json ? vesk::SetFatalExitHandler(vesk::ThrowFatalListingExit) : nullptr;
  bool result = true;
  try {
    for (size_t i = 0; i < programs.size() && result; ++i) {
      vesk::ListingProgram& program = programs[i];
      std::unique_ptr<BaseVeskAppTask> task = CreateTask();
      task->instructionSet = instructionSet.get();
      task->invocations = std::move(program.invocations);
      task->attributes = program.attributes;
      task->waveSize =
          summary ? ChooseWaveSize(program.attributes, generation) : (StallWave64() ? 64 : 32);
      vesk::JsonDocument programJson = vesk::JsonDocument::object();
      if (json) {
        task->format = vesk::ReportFormat::Json;
        task->jsonProgram = &programJson;
        task->jsonWriter = &*writer;
        writer->BeginObject();
        writer->Add("function", program.name.empty() ? vesk::JsonDocument(nullptr)
                                                     : vesk::JsonDocument(program.name));
      }
      // Summaries of several functions are set apart by an empty line.
      if (headers && summary && i > 0) *task->output << '\n';
      if (headers) *task->output << (dot ? "// Function " : "Function ") << program.name << '\n';
      if (task->invocations.empty()) {
        discardDocument();
        *task->output << "Could not find any invocations." << std::endl;
        result = false;
      } else {
        result = task->InvokeImpl();
      }
      task.reset();
      if (json && result) {
        for (auto it = programJson.begin(); it != programJson.end(); ++it) {
          writer->Add(it.key(), std::move(*it));
        }
        writer->End();
      }
    }
  } catch (const vesk::FatalListingExit& error) {
    if (!json) throw;
    discardDocument();
    vesk::SetFatalExitHandler(previousHandler);
    vesk::ExitFatally(error.what());
  } catch (...) {
    discardDocument();
    if (json) vesk::SetFatalExitHandler(previousHandler);
    throw;
  }
  if (json) vesk::SetFatalExitHandler(previousHandler);
  if (json && result) {
    writer->End();
    writer->End();
  } else if (json) {
    discardDocument();
  }
  reader.reset();
  instructionSet.reset();
  return result;
}
