// libFuzzer target: one input is a configuration byte followed by listing
// text. The text goes through the chosen reader and then, program by program,
// through every report the command line can write, each into a memory stream,
// with the same task classes the command line runs.
//
// Configuration byte (the first byte of the input):
//   bits 0-1  generation: gfx7, gfx8, gfx9, gfx10
//   bits 2-4  reader: raw, sa, hsail, sc, llvm; 5 to 7 detect the layout (auto)
//   bit 5     wave64 for the stall cycles
//   bit 6     stall cycles drawn with gap rows
//   bit 7     no generation given: an LLVM listing's target directive chooses
//             it, as on a command line without --isa
//
// Expected outcomes, which end one report or the whole input quietly: a
// listing error or analysis error (status 1 on the command line), a fatal
// listing exit (status 255), and the framing mismatch that the
// shader-analyzer and HSAIL-tool readers raise. Every other exception
// escapes and is a finding.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "app/base_task.h"
#include "app/cfg_dumper.h"
#include "app/liveness_analyzer.h"
#include "app/opcode_histogram_dumper.h"
#include "app/stall_cycle_analyzer.h"
#include "isa/instruction_set.h"
#include "readers/isa_reader.h"
#include "readers/llvm_listing_reader.h"
#include "readers/llvm_processors.h"
#include "util/analysis_error.h"
#include "util/fatal_exit.h"

namespace {

constexpr const char* kGenerations[] = {"gfx7", "gfx8", "gfx9", "gfx10"};

std::unique_ptr<vesk::IsaReader> CreateReader(unsigned choice) {
  switch (choice) {
    case 0:
      return std::make_unique<vesk::RawIsaReader>();
    case 1:
      return std::make_unique<vesk::ShaderAnalyzerIsaReader>();
    case 2:
      return std::make_unique<vesk::HSAILIsaReader>();
    case 3:
      return std::make_unique<vesk::ShaderDumpIsaReader>();
    case 4:
      return std::make_unique<vesk::LlvmIsaReader>();
    default:
      return std::make_unique<vesk::AutoIsaReader>();
  }
}

// The generation the command line reads with: the one given, or, without
// --isa, the processor an LLVM listing states. An unknown stated processor
// throws ListingError.
std::string ChooseGeneration(const std::string& given, bool isaGiven, unsigned readerChoice,
                             std::stringstream& input) {
  if (isaGiven) return given;
  const bool llvm = readerChoice == 4 ||
                    (readerChoice > 4 && dynamic_cast<vesk::LlvmIsaReader*>(
                                             vesk::AutoIsaReader::Detect(input).get()) != nullptr);
  if (!llvm) return given;
  const vesk::StatedProcessor stated = vesk::FindStatedProcessor(input.view());
  if (stated.line == 0) return given;
  const std::string generation = vesk::GenerationOfProcessor(stated.name);
  if (generation.empty()) throw vesk::ListingError(stated.line, "no instruction table");
  return generation;
}

// The deliberate framing failures of the two block-structured layouts.
bool IsFramingMismatch(const std::runtime_error& error) {
  const std::string_view message = error.what();
  return message.starts_with("Mismatch shader/end in line ") ||
         message.starts_with("Mismatched Disassembly for/end in line ");
}

// Runs one task the way the command line does after reading: the program is
// handed over, the report goes to a memory stream.
void RunTask(BaseVeskAppTask& task, const vesk::InstructionSet& set,
             const std::vector<vesk::Invocation>& program) {
  task.instructionSet = &set;
  task.invocations = program;
  try {
    task.InvokeImpl();
  } catch (const vesk::FatalListingExit&) {
  } catch (const vesk::AnalysisError&) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  vesk::SetFatalExitHandler(vesk::ThrowFatalListingExit);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return -1;
  const unsigned config = data[0];
  const unsigned readerChoice = (config >> 2) & 7u;
  const bool wave64 = (config & 0x20u) != 0;
  const bool showGaps = (config & 0x40u) != 0;
  const bool isaGiven = (config & 0x80u) == 0;

  std::stringstream input(std::string(reinterpret_cast<const char*>(data) + 1, size - 1));
  std::ostringstream output;

  std::unique_ptr<vesk::InstructionSet> set;
  std::vector<vesk::ListingProgram> programs;
  try {
    set = vesk::CreateInstructionSet(
        ChooseGeneration(kGenerations[config & 3u], isaGiven, readerChoice, input));
    if (!set) return 0;
    programs = CreateReader(readerChoice)->ReadPrograms(input, *set);
  } catch (const vesk::FatalListingExit&) {
    return 0;
  } catch (const vesk::AnalysisError&) {
    return 0;
  } catch (const std::runtime_error& error) {
    if (!IsFramingMismatch(error)) throw;
    return 0;
  }

  // The command line stops at the first program without instructions.
  for (const vesk::ListingProgram& listing : programs) {
    const std::vector<vesk::Invocation>& program = listing.invocations;
    if (program.empty()) break;

    CFGDumper basicBlocks(input, &output, BasicBlocks);
    RunTask(basicBlocks, *set, program);
    CFGDumper compact(input, &output, CompactBasicBlocks);
    RunTask(compact, *set, program);
    CFGDumper perInstruction(input, &output, PerInstruction);
    RunTask(perInstruction, *set, program);

    for (uint32_t options = 0; options < 4; ++options) {
      LivenessAnalyzer liveness(input, &output, static_cast<AnalyzeLiveness::Options>(options));
      RunTask(liveness, *set, program);
    }

    for (const char* groupBy : {"", "operand-size", "instruction-class"}) {
      OpcodeHistogramDumper histogram(input, &output, groupBy);
      RunTask(histogram, *set, program);
    }

    // Only GFX10 simulates; the other generations take the refusal path.
    StallCycleAnalyzer stalls(input, &output, wave64, showGaps);
    RunTask(stalls, *set, program);
    output.str(std::string());
  }
  return 0;
}
