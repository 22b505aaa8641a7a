// Per-instruction register liveness of one register class, in program order,
// and the register-pressure figures condensed from it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "cfg/basic_block.h"
#include "isa/invocation.h"
#include "isa/registers.h"

namespace vesk {

// What one instruction does with the registers of the analysed class.
class RegisterState {
 public:
  using Set = SmallIntSet<256>;

  RegisterState() = default;
  RegisterState(const Set& read, const Set& written, const Set& live)
      : read_(read), written_(written), live_(live) {}

  const Set& Read() const { return read_; }
  const Set& Written() const { return written_; }
  // Live on entry to or on exit from the instruction.
  const Set& Live() const { return live_; }

 private:
  Set read_;
  Set written_;
  Set live_;
};

struct RegisterUsage {
  int maxRegisterIndex = 0;  // highest register index live anywhere, 0 if none
  int maxLiveCount = 0;      // most registers live at one instruction
};

struct LivenessAnalysisOptions {
  // Hide registers that are live at the program start before any write
  // (kernel arguments and other preloaded values, or reads of garbage).
  bool removeStartLines : 1 = false;
};

using RegisterStates = std::vector<std::pair<const Invocation*, RegisterState>>;

class PerInvocationCfg;

// The liveness of one program, held as its solved graph with the nodes in
// program order; each state is formed when asked for, so that a long
// program's report needs no table of them.
class LivenessStates {
 public:
  LivenessStates(const std::vector<Invocation>& invocations, RegisterType type,
                 LivenessAnalysisOptions options);
  ~LivenessStates();
  size_t Size() const { return sorted_.size(); }
  // The state of the i-th node in program order, as Analyze gives it.
  std::pair<const Invocation*, RegisterState> Get(size_t i) const;
  // Get(i).second.Live() alone.
  RegisterState::Set Live(size_t i) const;

 private:
  using Set = RegisterState::Set;

  BasicBlockList blocks_;
  std::unique_ptr<PerInvocationCfg> cfg_;
  // The graph's nodes that reach the program's end, in program order.
  std::vector<uint32_t> sorted_;
  // By node: registers hidden as not yet written; empty unless start lines
  // are removed.
  std::vector<Set> unwritten_;
};

class LivenessAnalysis {
 public:
  // One pair per node of the per-instruction graph that reaches the program's
  // end, in program order; the entry and exit nodes carry a null invocation.
  // Throws AnalysisError for a program the graph cannot be built for.
  static RegisterStates Analyze(const std::vector<Invocation>& invocations, RegisterType type,
                                LivenessAnalysisOptions options);
  static RegisterUsage GetRegisterUsage(const RegisterStates& states);
  static RegisterUsage GetRegisterUsage(const LivenessStates& states);
  // One report line after the line-number column: live count, one character
  // per register (x read+written, v read, ^ written, : live), instruction.
  static std::string FormatRegisterUsage(const std::pair<const Invocation*, RegisterState>& state,
                                         RegisterUsage usage);
  // The same line appended to `line`, without a string of its own.
  static void AppendRegisterUsage(std::string& line,
                                  const std::pair<const Invocation*, RegisterState>& state,
                                  RegisterUsage usage);
};

}  // namespace vesk
