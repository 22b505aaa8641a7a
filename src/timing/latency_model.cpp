// Latency model of the dependency record: issue, execute and visibility
// latencies by execution unit, refined by opcode traits (64-bit and slow
// transcendental ops, slow integer multiplies, DPP operands, pipeline syncs),
// with memory-like operations left to the hardware counters.
#include <string>
#include <string_view>

#include <fmt/format.h>

#include "timing/invocation_dependency_info.h"
#include "timing/operand_number.h"
#include "util/analysis_error.h"
#include "util/string_helpers.h"

namespace vesk {

LatencyBaseData InvocationDependencyInfo::GetLatencyBaseData() const {
  return GetLatencyBaseData(GetOpcodeNameTraits(GetName()));
}

LatencyBaseData InvocationDependencyInfo::GetLatencyBaseData(const OpcodeNameTraits& name) const {
  LatencyBaseData data;
  data.isSlowTrans = name.isSlowTrans;
  data.isCompare64 = name.isCompare64;
  data.isShift64 = name.isShift64;

  data.isWideOrDpp = data.isCompare64 || data.isShift64;
  for (const std::string& arg : invocation_->GetArgs()) {
    const std::string_view operand = arg;
    if (operand == "SQ_SRC_DPP" || operand.starts_with("row") || operand.starts_with("dpp8") ||
        operand.starts_with("quad")) {
      data.isWideOrDpp = true;
    }
    // Row shifts, rotates, mirrors, shares and xmasks reaching beyond a
    // half-row cross DPP rows and cost an extra issue cycle.
    if (StartsWithAny(operand, {"row_shl", "row_shr", "row_ror", "row_mirror", "row_share"})) {
      data.isRowDpp = true;
    } else if (operand.starts_with("row_xmask")) {
      // "row_xmask:<n>": the lane mask follows the name and one separator.
      if (operand.size() < 10)
        throw ListingError(invocation_->GetSourceLine(),
                           fmt::format("row_xmask operand '{}' has no lane mask", operand));
      const int mask = ConvertOperandNumber(*invocation_, "row_xmask operand", operand, 32,
                                            [&] { return ParseInt(arg.substr(10)); });
      if (mask >= 8) data.isRowDpp = true;
    }
  }

  if (name.isSlowMulName) {
    data.isSlowMul = true;
    data.isTransF64 = false;
  } else if (data.isSlowTrans || data.isWideOrDpp) {
    data.isSlowMul = false;
    data.isTransF64 = false;
  } else if (name.namesF64 && UsesVALU()) {
    data.isTransF64 = UsesTransVALU();
    data.isSlowMul = false;
  }

  data.isPipeSync = name.isPipeSync;
  return data;
}

void InvocationDependencyInfo::UpdateLatencies(const OpcodeNameTraits& name) {
  const LatencyBaseData b = GetLatencyBaseData(name);
  auto set = [this](int issue, int execute, int visibility) {
    issueLatency_ = issue;
    executeLatency_ = execute;
    visibilityLatency_ = visibility;
  };

  if (UsesSALU()) {
    set(1, 8, 1);
  } else if (IsLDSDirect()) {
    set(1, 18, 4);
  } else if (UsesVALU() && !UsesTransVALU()) {
    set(1, 15, 4);
  } else if (!UsesVALU() && UsesTransVALU()) {
    set(4, 12, 6);
  } else if (UsesVALU() && UsesTransVALU()) {
    // Ops that the name places on both the VALU and the transcendental unit
    // (64-bit ops, slow multiplies, ...): cost from their traits.
    const int special = IsSpecial() ? 1 : 0;
    const int issue = b.isPipeSync + 2 * (special + b.isWideOrDpp +
                                          8 * (b.isTransF64 + b.isSlowTrans) + 2 * b.isSlowMul);
    const int visibility = 8 * b.isSlowTrans + 6 * b.isTransF64 + 4 * b.isShift64 +
                           4 * b.isSlowMul + 4 * special + b.isPipeSync;
    set(issue, 15, visibility);
  }

  // Compares write a lane mask that is consumed through the SGPR path.
  if (b.isCompare64) {
    visibilityLatency_ = 0;
  } else if (name.startsVCmp_) {
    set(1, 15, 1);
  }

  if (b.isRowDpp) issueLatency_ += 1;

  // Completion of memory, GDS and message operations is only known through
  // the hardware counters.
  if (UsesSMEM() || (UsesVMEM() && !IsLDSDirect()) || UsesGDS() || UsesMsg()) {
    set(15, kUnboundedLatency, kUnboundedLatency);
  }

  // Program-counter reads and mode/register writes drain the pipeline.
  if (IsPCReadEtc()) set(1, 15, 16);
}

std::string InvocationDependencyInfo::LatenciesToString() const {
  return "Issue latency:\t" + std::to_string(issueLatency_) + "\nExecute latency:\t" +
         std::to_string(executeLatency_) + "\nVisibility latency:\t" +
         std::to_string(visibilityLatency_) + "\n";
}

}  // namespace vesk
