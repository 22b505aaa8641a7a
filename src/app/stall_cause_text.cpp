// Stall causes as short phrases and as JSON objects.
#include "app/stall_cause_text.h"

#include <fmt/format.h>

#include "isa/invocation.h"

namespace vesk {

namespace {

const char* KindName(StallCauseKind kind) {
  switch (kind) {
    case StallCauseKind::kMemoryCounter:
      return "memory_counter";
    case StallCauseKind::kRegister:
      return "register";
    case StallCauseKind::kDependencyCounter:
      return "dependency_counter";
    case StallCauseKind::kHardware:
      return "hardware";
    case StallCauseKind::kNone:
      break;
  }
  return "none";
}

// The phrases of the unit and issue conditions.
const char* HardwarePhrase(uint8_t condition) {
  switch (condition) {
    case kF32BusyStall:
      return "VALU busy";
    case kTrans32BusyStall:
      return "transcendental unit busy";
    case kPCReadStall:
      return "latency of an s_setreg or PC read before it";
    case kPCReadDrainStall:
      return "counters drained before s_setreg/PC read";
    case kIssueDistanceStall:
      return "block start: instruction fetch after a branch";
    case kShortenedVaVdstStall:
      return "shortened vdst wait";
    default:
      return "";
  }
}

// "buffer_load_dword v[4:7] (line 12)": the opcode, with the first operand
// for memory operations (their data register, which tells several accesses
// apart); other culprits are named by opcode and line.
std::string CulpritText(const Invocation& culprit, bool withOperand) {
  std::string text = culprit.GetInstruction()->GetName();
  if (withOperand && !culprit.GetArgs().empty()) {
    text += ' ';
    text += culprit.GetArgs().front();
  }
  if (culprit.GetSourceLine() != 0) text += fmt::format(" (line {})", culprit.GetSourceLine());
  return text;
}

}  // namespace

std::string StallRegisterName(RegisterID reg) {
  if (IsVGPR(reg)) return fmt::format("v{}", GetVGPRIndex(reg));
  if (IsStandardSGPR(reg)) return fmt::format("s{}", GetSGPRIndex(reg));
  switch (reg) {
    case kExec:
      return "exec";
    case kVcc:
      return "vcc";
    case kScc:
      return "scc";
    case kSccz:
      return "sccz";
    case kM0:
      return "m0";
    case kVccz:
      return "vccz";
    case kExecz:
      return "execz";
    default:
      return "";
  }
}

std::string DescribeStallCause(const StallCause& cause) {
  switch (cause.GetKind()) {
    case StallCauseKind::kNone:
      return "";
    case StallCauseKind::kHardware:
      return HardwarePhrase(cause.condition);
    case StallCauseKind::kRegister: {
      std::string text = StallRegisterName(cause.reg);
      if (cause.culprit != nullptr)
        return text + " written by " + CulpritText(*cause.culprit, false);
      return text + " not yet written";
    }
    case StallCauseKind::kMemoryCounter: {
      const char* counter = GetWaitCounterName(cause.counter);
      const std::string name = counter != nullptr ? counter : "memory";
      if (cause.culprit != nullptr)
        return name + ": waits for " + CulpritText(*cause.culprit, true);
      // No operation was outstanding: a fixed or unbounded wait of the model.
      return name + " wait";
    }
    case StallCauseKind::kDependencyCounter: {
      std::string text = GetStallConditionName(cause.condition);
      if (cause.culprit != nullptr)
        return text + ": waits for " + CulpritText(*cause.culprit, false);
      return text;
    }
  }
  return "";
}

nlohmann::ordered_json StallCauseToJson(const StallCause& cause) {
  using JsonDocument = nlohmann::ordered_json;
  JsonDocument json = JsonDocument::object();
  json["kind"] = KindName(cause.GetKind());
  json["condition"] = GetStallConditionName(cause.condition);
  const char* counter = GetWaitCounterName(cause.counter);
  json["counter"] = counter != nullptr ? JsonDocument(counter) : JsonDocument(nullptr);
  const std::string reg = cause.reg != kNoRegister ? StallRegisterName(cause.reg) : "";
  json["register"] = reg.empty() ? JsonDocument(nullptr) : JsonDocument(reg);
  const Invocation* culprit = cause.culprit;
  json["source_line"] = culprit != nullptr && culprit->GetSourceLine() != 0
                            ? JsonDocument(culprit->GetSourceLine())
                            : JsonDocument(nullptr);
  json["source"] =
      culprit != nullptr ? JsonDocument(culprit->ToString(false, false)) : JsonDocument(nullptr);
  return json;
}

}  // namespace vesk
