// The summary report: labelled lines, an occupancy sentence and a small
// table of the worst stalls; and the same figures as one JSON object.
#include "app/summary_reporter.h"

#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "app/json_printers.h"
#include "app/program_summary.h"
#include "app/stall_cause_text.h"
#include "util/string_helpers.h"

namespace vesk {

namespace {

// Values start in this column, after the label.
constexpr size_t kLabelWidth = 14;
// Instruction texts are cut to this many characters: in the stall table,
// and after the register peaks.
constexpr size_t kInstructionWidth = 34;
constexpr size_t kPeakInstructionWidth = 40;

std::string Plural(long long count, std::string_view word) {
  return fmt::format("{} {}{}", count, word, count == 1 ? "" : "s");
}

void AddLine(std::string& out, std::string_view label, std::string_view value) {
  out += label;
  if (label.size() < kLabelWidth) out.append(kLabelWidth - label.size(), ' ');
  out += value;
  out += '\n';
}

// A long instruction keeps its start and ends in "...".
std::string Shorten(std::string text, size_t width) {
  if (text.size() > width) text = text.substr(0, width - 3) + "...";
  return text;
}

// Summaries name instructions without their labels.
std::string InstructionText(const Invocation* invocation) {
  return invocation ? InstructionJsonText(*invocation, false) : std::string();
}

std::string AccessCounts(const MemoryAccessCounts& counts) {
  std::vector<std::string> parts;
  if (counts.loads) parts.push_back(Plural(counts.loads, "load"));
  if (counts.stores) parts.push_back(Plural(counts.stores, "store"));
  if (counts.atomics) parts.push_back(Plural(counts.atomics, "atomic"));
  if (counts.other) parts.push_back(fmt::format("{} other", counts.other));
  return Join(", ", parts.begin(), parts.end());
}

std::string MemoryText(const MemoryStatistics& memory) {
  std::vector<std::string> families;
  const std::pair<const char*, const MemoryAccessCounts*> kinds[] = {
      {"buffer", &memory.buffer},   {"global", &memory.global}, {"flat", &memory.flat},
      {"scratch", &memory.scratch}, {"image", &memory.image},   {"scalar", &memory.scalar},
      {"LDS", &memory.lds}};
  for (const auto& [name, counts] : kinds) {
    if (counts->Total() > 0) families.push_back(fmt::format("{} {}", name, AccessCounts(*counts)));
  }
  if (memory.gds) families.push_back(fmt::format("GDS {}", memory.gds));
  if (memory.exports) families.push_back(Plural(memory.exports, "export"));
  return families.empty() ? "none" : Join("; ", families.begin(), families.end());
}

std::string WaitText(const WaitStatistics& waits) {
  std::vector<std::string> parts;
  if (waits.total) {
    std::vector<std::string> counters;
    const std::pair<const char*, int> kinds[] = {{"vmcnt", waits.vmcnt},
                                                 {"vscnt", waits.vscnt},
                                                 {"lgkmcnt", waits.lgkmcnt},
                                                 {"expcnt", waits.expcnt},
                                                 {"encoded", waits.encoded}};
    for (const auto& [name, count] : kinds) {
      if (count) counters.push_back(fmt::format("{} {}", name, count));
    }
    std::string text = fmt::format("{} s_waitcnt", waits.total);
    if (!counters.empty()) text += " (" + Join(", ", counters.begin(), counters.end()) + ")";
    parts.push_back(std::move(text));
  }
  if (waits.depctr) parts.push_back(fmt::format("{} s_waitcnt_depctr", waits.depctr));
  return parts.empty() ? "none" : Join("; ", parts.begin(), parts.end());
}

std::string RegisterText(const RegisterFileSummary& file) {
  if (file.maxLive == 0 || file.peakInstruction == nullptr) {
    return fmt::format("none live; {} allocated", file.allocated);
  }
  const std::string where = file.peakLine ? fmt::format("line {}", file.peakLine)
                                          : std::string("an instruction of unknown line");
  return fmt::format("{} live at most, first at {} ({}); {} allocated", file.maxLive, where,
                     Shorten(InstructionText(file.peakInstruction), kPeakInstructionWidth),
                     file.allocated);
}

// What the register files alone would allow; SGPRs limit waves before
// gfx10 only.
std::string RegisterWaves(const ProgramSummary& summary) {
  const Occupancy& o = summary.occupancy;
  std::string text =
      fmt::format("VGPRs would allow {} ({} allocated, {} in granules of {})", o.vgprWaves,
                  summary.vgpr.allocated, o.vgprsRounded, o.vgprGranule);
  if (summary.generation < 10) {
    text += fmt::format(", SGPRs {} ({} counted)", o.sgprWaves, o.sgprsCounted);
  }
  return text;
}

// The occupancy sentence: the waves, what limits them and, for a register
// limit, how many registers fewer give the next wave.
std::vector<std::string> OccupancyText(const ProgramSummary& summary,
                                       const ProgramAttributes& attributes) {
  const Occupancy& o = summary.occupancy;
  const std::string head =
      fmt::format("{} per SIMD of {}", Plural(o.wavesPerSimd, "wave"), o.maxWaves);
  const std::string next = fmt::format("would give {}", Plural(o.wavesPerSimd + 1, "wave"));
  switch (o.limitedBy) {
    case OccupancyLimit::Vgpr: {
      std::string detail = fmt::format("{} allocated, {} in granules of {}", summary.vgpr.allocated,
                                       o.vgprsRounded, o.vgprGranule);
      detail +=
          o.fewerForNextWave > 0
              ? fmt::format("; {} or fewer {}", summary.vgpr.allocated - o.fewerForNextWave, next)
              : std::string("; fewer VGPRs alone give no more waves");
      return {head + ", limited by VGPRs:", detail};
    }
    case OccupancyLimit::Sgpr: {
      const int reserved = o.sgprsCounted - summary.sgpr.allocated;
      return {head + ", limited by SGPRs:",
              fmt::format("{} counted ({} allocated, {} reserved by hardware), {} per wave at {}",
                          o.sgprsCounted, summary.sgpr.allocated, reserved, o.sgprsRounded,
                          Plural(o.wavesPerSimd, "wave")),
              o.fewerForNextWave > 0 ? fmt::format("{} or fewer allocated ({} counted) {}",
                                                   summary.sgpr.allocated - o.fewerForNextWave,
                                                   o.sgprsCounted - o.fewerForNextWave, next)
                                     : std::string("fewer SGPRs alone give no more waves")};
    }
    case OccupancyLimit::Lds:
      // Without LDS it is the workgroup slots of a compute unit that run out:
      // a large workgroup needs many waves resident at once.
      if (attributes.ldsBytes.value_or(0) == 0) {
        return {head + ", limited by the workgroup size:",
                fmt::format("{} work-items per workgroup, no LDS",
                            attributes.workgroupSize.value_or(0)),
                RegisterWaves(summary)};
      }
      return {head + ", limited by LDS and workgroup size:",
              fmt::format("{} LDS bytes per workgroup of {} work-items",
                          attributes.ldsBytes.value_or(0), attributes.workgroupSize.value_or(0)),
              RegisterWaves(summary)};
    case OccupancyLimit::Waves:
      break;
  }
  return {head + ", limited by the wave slots:", RegisterWaves(summary)};
}

void AddStallTable(std::string& out, const StallSummary& stall) {
  AddLine(out, "Stalls",
          fmt::format("{} in finite stalls; {} of unbounded latency (Inf)",
                      Plural(stall.totalCycles, "cycle"), Plural(stall.unboundedWaits, "wait")));
  if (stall.worst.empty()) return;
  out += fmt::format("Worst stalls\n  {:>5}  {:>6}  {:<{}}  {}\n", "Line", "Cycles", "Instruction",
                     kInstructionWidth, "Cause");
  for (const StallEntry& entry : stall.worst) {
    const std::string line = entry.line ? std::to_string(entry.line) : std::string("-");
    std::string row = fmt::format("  {:>5}  {:>6}  {:<{}}  {}", line, entry.cycles,
                                  Shorten(InstructionText(entry.invocation), kInstructionWidth),
                                  kInstructionWidth, DescribeStallCause(entry.cause));
    while (!row.empty() && row.back() == ' ') row.pop_back();
    out += row;
    out += '\n';
  }
}

JsonDocument RegisterFileJson(const RegisterFileSummary& file) {
  const bool peak = file.maxLive > 0 && file.peakInstruction != nullptr;
  JsonDocument json = JsonDocument::object();
  json["max_live"] = file.maxLive;
  json["line"] = peak && file.peakLine ? JsonDocument(file.peakLine) : JsonDocument(nullptr);
  json["instruction"] =
      peak ? JsonDocument(InstructionText(file.peakInstruction)) : JsonDocument(nullptr);
  json["allocated"] = file.allocated;
  return json;
}

JsonDocument AccessJson(const MemoryAccessCounts& counts) {
  return JsonDocument{{"loads", counts.loads},
                      {"stores", counts.stores},
                      {"atomics", counts.atomics},
                      {"other", counts.other}};
}

}  // namespace

std::string FormatSummaryText(const ProgramSummary& summary, const ProgramAttributes& attributes) {
  const ProgramStatistics& s = summary.statistics;
  std::string out;
  AddLine(out, "Target", fmt::format("gfx{}, wave{}", summary.generation, summary.waveSize));
  AddLine(out, "Instructions",
          fmt::format("{} in {}", s.instructions, Plural(s.basicBlocks, "basic block")));
  if (s.unknownOpcodes > 0) {
    AddLine(out, "Unknown",
            fmt::format("{} not in the gfx{} table (shown as <unknown>; check --isa)",
                        Plural(s.unknownOpcodes, "instruction"), summary.generation));
  }
  AddLine(out, "Branches",
          fmt::format("{} conditional, {}; {} ({})", s.conditionalBranches, Plural(s.jumps, "jump"),
                      Plural(s.loopHeaders, "loop"), Plural(s.backEdges, "back edge")));
  AddLine(out, "Memory", MemoryText(s.memory));
  AddLine(out, "Waits", WaitText(s.waits));
  AddLine(out, "VGPRs", RegisterText(summary.vgpr));
  AddLine(out, "SGPRs", RegisterText(summary.sgpr));
  AddLine(out, "Special regs",
          summary.specialRegisters.empty()
              ? std::string("none")
              : Join(", ", summary.specialRegisters.begin(), summary.specialRegisters.end()));
  const std::vector<std::string> occupancy = OccupancyText(summary, attributes);
  for (size_t i = 0; i < occupancy.size(); ++i)
    AddLine(out, i == 0 ? "Occupancy" : "", occupancy[i]);
  if (summary.stall) AddStallTable(out, *summary.stall);
  if (!summary.stallError.empty()) AddLine(out, "Stalls", "not simulated: " + summary.stallError);
  return out;
}

void FillSummaryJson(JsonDocument& program, const ProgramSummary& summary,
                     const ProgramAttributes& attributes) {
  const ProgramStatistics& s = summary.statistics;
  program["wave_size"] = summary.waveSize;
  program["instructions"] = s.instructions;
  program["unknown_opcodes"] = s.unknownOpcodes;
  program["blocks"] = s.basicBlocks;
  program["branches"] = {{"conditional", s.conditionalBranches}, {"jumps", s.jumps}};
  program["loops"] = {{"back_edges", s.backEdges}, {"headers", s.loopHeaders}};
  const MemoryStatistics& m = s.memory;
  program["memory"] = {{"buffer", AccessJson(m.buffer)},
                       {"global", AccessJson(m.global)},
                       {"flat", AccessJson(m.flat)},
                       {"scratch", AccessJson(m.scratch)},
                       {"image", AccessJson(m.image)},
                       {"scalar", AccessJson(m.scalar)},
                       {"lds", AccessJson(m.lds)},
                       {"gds", m.gds},
                       {"exports", m.exports}};
  const WaitStatistics& w = s.waits;
  program["waits"] = {{"total", w.total},     {"vmcnt", w.vmcnt},   {"vscnt", w.vscnt},
                      {"lgkmcnt", w.lgkmcnt}, {"expcnt", w.expcnt}, {"encoded", w.encoded},
                      {"depctr", w.depctr}};
  program["vgpr"] = RegisterFileJson(summary.vgpr);
  program["sgpr"] = RegisterFileJson(summary.sgpr);
  program["special_registers"] = summary.specialRegisters;
  const Occupancy& o = summary.occupancy;
  program["occupancy"] = {
      {"waves_per_simd", o.wavesPerSimd},
      {"limited_by", OccupancyLimitName(o.limitedBy)},
      {"max_waves", o.maxWaves},
      {"vgpr_waves", o.vgprWaves},
      {"vgpr_granule", o.vgprGranule},
      {"vgprs_rounded", o.vgprsRounded},
      {"sgpr_waves", o.sgprWaves},
      {"sgprs_counted", o.sgprsCounted},
      {"sgprs_rounded", o.sgprsRounded},
      {"lds_waves", o.ldsWaves ? JsonDocument(*o.ldsWaves) : JsonDocument(nullptr)},
      {"lds_bytes",
       attributes.ldsBytes ? JsonDocument(*attributes.ldsBytes) : JsonDocument(nullptr)},
      {"workgroup_size",
       attributes.workgroupSize ? JsonDocument(*attributes.workgroupSize) : JsonDocument(nullptr)},
      {"fewer_for_next_wave", o.fewerForNextWave}};
  if (!summary.stall) {
    program["stall"] = nullptr;
    if (!summary.stallError.empty()) program["stall_error"] = summary.stallError;
    return;
  }
  JsonDocument worst = JsonDocument::array();
  for (const StallEntry& entry : summary.stall->worst) {
    worst.push_back({{"line", entry.line ? JsonDocument(entry.line) : JsonDocument(nullptr)},
                     {"cycles", entry.cycles},
                     {"instruction", InstructionText(entry.invocation)},
                     {"cause", StallCauseToJson(entry.cause)}});
  }
  program["stall"] = {{"total_cycles", summary.stall->totalCycles},
                      {"unbounded_waits", summary.stall->unboundedWaits},
                      {"worst", std::move(worst)}};
}

}  // namespace vesk

SummaryReporter::SummaryReporter(std::stringstream& input, std::ostream* output)
    : BaseVeskAppTask(input, output) {}

bool SummaryReporter::InvokeImpl() {
  vesk::SummaryOptions options;
  options.generation = static_cast<int>(instructionSet->GetVersion() >> 16);
  options.waveSize = waveSize;
  options.attributes = attributes;
  const vesk::ProgramSummary summary = vesk::SummarizeProgram(invocations, options);
  if (format == vesk::ReportFormat::Json) {
    vesk::FillSummaryJson(*jsonProgram, summary, attributes);
    return true;
  }
  const std::string text = vesk::FormatSummaryText(summary, attributes);
  output->write(text.data(), static_cast<std::streamsize>(text.size()));
  return true;
}
