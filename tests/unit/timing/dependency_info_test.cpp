// Dependency records built from GFX10 invocations: explicit and implicit
// register reads and writes, the register flags derived from them, unit
// flags from operand markers, opcode properties and wait types.
#include <algorithm>

#include "timing_test_util.h"

namespace vesk::testing {
namespace {

class DependencyInfoTest : public TimingTest {};

TEST_F(DependencyInfoTest, VectorAluReadsExecImplicitly) {
  const InvocationDependencyInfo& info = Info("v_add_f32", {"v0", "v1", "v2"});
  EXPECT_EQ(info.GetWrittenVGPRs(), UnifiedRegisterSet({0}, {}));
  EXPECT_EQ(info.GetReadVGPRs(), UnifiedRegisterSet({1, 2}, {}));
  EXPECT_EQ(info.GetImplicitReadSGPRs(), UnifiedRegisterSet({kExec}));
  EXPECT_EQ(info.GetReadRegisters(), UnifiedRegisterSet({1, 2, kExec}));
  EXPECT_TRUE(info.ReadsExec() && info.ReadsAnySGPR() && info.ReadsAnyVGPR());
  EXPECT_TRUE(info.WritesAnyVGPR());
  EXPECT_FALSE(info.WritesAnySGPR() || info.ReadsAnyStandardSGPR());
  EXPECT_EQ(info.GetHardwareUsage().GetBits(), static_cast<uint16_t>(InstructionUnit::VALU));
  EXPECT_EQ(&info.GetInvocation(), &invocations_.back());
}

TEST_F(DependencyInfoTest, ScalarAluWritesSccImplicitly) {
  const InvocationDependencyInfo& info = Info("s_add_u32", {"s0", "s1", "s2"});
  EXPECT_EQ(info.GetExplicitWriteSGPRs(), UnifiedRegisterSet({256}));
  EXPECT_EQ(info.GetImplicitWriteSGPRs(), UnifiedRegisterSet({kScc}));
  EXPECT_EQ(info.GetWrittenSGPRs(), UnifiedRegisterSet({256, kScc}));
  EXPECT_EQ(info.GetWriteRegisters(), UnifiedRegisterSet({256, kScc}));
  EXPECT_EQ(info.GetReadSGPRs(), UnifiedRegisterSet({257, 258}));
  EXPECT_TRUE(info.WritesSCC() && info.WritesAnySGPR() && info.WritesAnyStandardSGPR());
  EXPECT_TRUE(info.ReadsAnyStandardSGPR());
  EXPECT_FALSE(info.ReadsSCC() || info.ReadsAnyVGPR() || info.WritesAnyVGPR());
  EXPECT_TRUE(info.GetHardwareUsage().UseSALU());
}

// "Reads a standard SGPR" is decided by the written SGPRs, and only when the
// instruction reads some scalar register at all.
TEST_F(DependencyInfoTest, ReadsAnyStandardSgprFollowsWrittenSgprs) {
  const InvocationDependencyInfo& readOnly = Info("v_mov_b32", {"v0", "s5"});
  EXPECT_TRUE(readOnly.GetExplicitReadSGPRs().Contains(261));
  EXPECT_FALSE(readOnly.ReadsAnyStandardSGPR());
  const InvocationDependencyInfo& writeOnly = Info("s_mov_b32", {"s0", "5"});
  EXPECT_TRUE(writeOnly.WritesAnyStandardSGPR());
  EXPECT_FALSE(writeOnly.ReadsAnySGPR() || writeOnly.ReadsAnyStandardSGPR());
}

struct ImplicitCase {
  const char* opcode;
  std::vector<std::string> args;
  std::vector<RegisterID> implicitReads, implicitWrites;
};

TEST_F(DependencyInfoTest, ImplicitRegisters) {
  const ImplicitCase cases[] = {
      {"s_cbranch_vccz", {"BB0_1"}, {kVccz}, {}},
      {"s_cbranch_scc1", {"BB0_1"}, {kScc}, {}},
      {"s_cbranch_execz", {"BB0_1"}, {kExecz}, {}},
      {"v_div_fmas_f32", {"v0", "v1", "v2", "v3"}, {kExec, kVcc}, {}},
      {"v_div_scale_f32", {"v0", "vcc_lo", "v1", "v2", "v3"}, {kExec}, {kVcc}},
      {"v_add_co_u32", {"v0", "vcc_lo", "v1", "v2"}, {kExec}, {kVcc}},
      {"v_mad_u64_u32", {"v[0:1]", "s0", "v2", "v3", "v[4:5]"}, {kExec}, {kVcc}},
      {"v_cmpx_eq_u32", {"v1", "v2"}, {kExec}, {kExec}},
      {"s_and_saveexec_b32", {"s0", "vcc_lo"}, {kExec}, {kScc}},
      {"s_cmp_eq_u32", {"s0", "s1"}, {}, {kScc}},
      {"s_mov_b32", {"s0", "s1"}, {}, {}},
  };
  for (const auto& c : cases) {
    const InvocationDependencyInfo& info = Info(c.opcode, c.args);
    EXPECT_EQ(info.GetImplicitReadSGPRs(), UnifiedRegisterSet(c.implicitReads)) << c.opcode;
    EXPECT_EQ(info.GetImplicitWriteSGPRs(), UnifiedRegisterSet(c.implicitWrites)) << c.opcode;
  }
}

struct UnitCase {
  const char* opcode;
  std::vector<std::string> args;
  uint16_t usage;
  bool vmemLds, gds, load, store;
};

TEST_F(DependencyInfoTest, MemoryUnitsAndOperandMarkers) {
  using U = InstructionUnit;
  auto bits = [](std::initializer_list<U> units) {
    uint16_t b = 0;
    for (U u : units) b |= static_cast<uint16_t>(u);
    return b;
  };
  const UnitCase cases[] = {
      // LDS reads and writes are not named "_load"/"_store", so they are neither.
      {"ds_read_b32", {"v0", "v1"}, bits({U::VMEM, U::LDS}), true, false, false, false},
      {"ds_write_b32", {"v0", "gds", "v1"}, bits({U::GDS}), false, true, false, false},
      {"global_load_dword", {"v0", "v[0:1]", "off"}, bits({U::GDS}), false, true, true, false},
      {"global_atomic_add", {"v0", "v[0:1]", "v2", "off"}, bits({U::GDS}), false, true, true, true},
      {"flat_load_dword", {"v0", "v[0:1]"}, bits({U::VMEM, U::LDS}), true, false, true, false},
      {"buffer_load_dword",
       {"v0", "lds", "s[0:3]"},
       bits({U::VMEM, U::LDS}),
       true,
       false,
       true,
       false},
      {"image_sample",
       {"v[0:3]", "v[4:5]", "s[0:7]", "s[8:11]"},
       bits({U::VMEM}),
       false,
       false,
       true,
       false},
      {"v_interp_p1_f32",
       {"v0", "v1", "attr0.x"},
       bits({U::VALU, U::LDS}),
       false,
       false,
       false,
       false},
      {"v_mov_b32", {"v0", "lds_direct"}, bits({U::VALU, U::LDS}), false, false, false, false},
  };
  for (const auto& c : cases) {
    const InvocationDependencyInfo& info = Info(c.opcode, c.args);
    EXPECT_EQ(info.GetHardwareUsage().GetBits(), c.usage) << c.opcode;
    EXPECT_EQ(info.UsesVMEMLDS(), c.vmemLds) << c.opcode;
    EXPECT_EQ(info.UsesGDS(), c.gds) << c.opcode;
    EXPECT_EQ(info.IsLoad(), c.load) << c.opcode;
    EXPECT_EQ(info.IsStore(), c.store) << c.opcode;
  }
  EXPECT_TRUE(infos_[7]->IsVInterp() && infos_[7]->IsLDSDirect());
}

// Operand markers only count at their operand position with enough operands,
// and scalar opcodes pick up implicit exec/scc writes from their names.
TEST_F(DependencyInfoTest, OperandMarkerThresholdsAndNameWrites) {
  using I = InvocationDependencyInfo;
  using Query = bool (I::*)() const;
  const struct {
    const char* opcode;
    std::vector<std::string> args;
    std::vector<Query> set, unset;
  } cases[] = {
      // "gds" as operand 1 needs at least three operands; otherwise it is an LDS access.
      {"ds_write_b32", {"v0", "gds"}, {&I::UsesVMEMLDS}, {&I::UsesGDS}},
      {"ds_write_b32", {"v0", "gds", "v1"}, {&I::UsesGDS}, {&I::UsesVMEMLDS}},
      // The same for "lds" on a buffer access.
      {"buffer_load_dword", {"v0", "lds"}, {&I::UsesVMEMTex}, {&I::UsesVMEMLDS}},
      {"buffer_load_dword", {"v0", "lds", "s[0:3]"}, {&I::UsesVMEMTex, &I::UsesVMEMLDS}, {}},
      // The *_wrexec forms write exec on top of scc.
      {"s_andn2_wrexec_b32", {"s0", "s1"}, {&I::WritesExec, &I::WritesSCC}, {}},
      {"s_andn2_b32", {"s0", "s1", "s2"}, {&I::WritesSCC}, {&I::WritesExec}},
      {"s_cbranch_execz", {"BB0_1"}, {&I::ReadsExecZ}, {&I::ReadsExec, &I::ReadsVCCZ}},
      // A lane read writes a standard SGPR and only reads exec among the
      // scalar registers; the "reads a standard SGPR" flag still follows the
      // written SGPRs.
      {"v_readfirstlane_b32",
       {"s0", "v1"},
       {&I::IsReadFirstLane, &I::WritesAnyStandardSGPR, &I::ReadsAnyStandardSGPR},
       {}},
  };
  for (const auto& c : cases) {
    const InvocationDependencyInfo& info = Info(c.opcode, c.args);
    const std::string label = std::string(c.opcode) + " " + ::testing::PrintToString(c.args);
    for (size_t i = 0; i < c.set.size(); ++i)
      EXPECT_TRUE((info.*c.set[i])()) << label << " set query " << i;
    for (size_t i = 0; i < c.unset.size(); ++i)
      EXPECT_FALSE((info.*c.unset[i])()) << label << " unset query " << i;
  }
  EXPECT_EQ(infos_[4]->GetImplicitWriteSGPRs(), UnifiedRegisterSet({kExec, kScc}));
  EXPECT_EQ(infos_[7]->GetExplicitReadSGPRs(), UnifiedRegisterSet());
  EXPECT_EQ(infos_[7]->GetWrittenSGPRs(), UnifiedRegisterSet({256}));
}

struct WaitCase {
  const char* opcode;
  std::vector<std::string> args;
  WaitType expected;
};

TEST_F(DependencyInfoTest, WaitTypes) {
  const WaitCase cases[] = {
      {"s_waitcnt", {"vmcnt(0)"}, WaitType::VmCnt},
      {"s_waitcnt", {"lgkmcnt(0)", "vmcnt(0)"}, WaitType::LgkmCnt},  // first operand only
      {"s_waitcnt", {"vscnt(0)"}, WaitType::VsCnt},
      {"s_waitcnt", {"expcnt(0)"}, WaitType::VsCnt},  // plain form maps exp to vs
      {"s_waitcnt", {"0"}, WaitType::None},
      {"s_waitcnt", {}, WaitType::None},
      {"s_waitcnt_vmcnt", {"null", "0"}, WaitType::VmCnt},
      {"s_waitcnt_vscnt", {"null", "0"}, WaitType::VsCnt},
      {"s_waitcnt_lgkmcnt", {"null", "0"}, WaitType::LgkmCnt},
      {"s_waitcnt_expcnt", {"null", "0"}, WaitType::ExpCnt},
      {"s_waitcnt_depctr", {"vmcnt(0)"}, WaitType::None},
  };
  for (const auto& c : cases) {
    const InvocationDependencyInfo& info = Info(c.opcode, c.args);
    EXPECT_EQ(info.GetWaitType(), c.expected)
        << c.opcode << " " << ::testing::PrintToString(c.args);
    EXPECT_TRUE(info.IsWaitCnt()) << c.opcode;
    EXPECT_EQ(info.IsWaitCntDepCtr(), std::string(c.opcode) == "s_waitcnt_depctr") << c.opcode;
  }
  EXPECT_FALSE(Info("s_nop", {"0"}).IsWaitCnt());
}

// Each listed flag query must hold for the instruction.
TEST_F(DependencyInfoTest, FlagsFromNamesAndRegisters) {
  using Query = bool (InvocationDependencyInfo::*)() const;
  using I = InvocationDependencyInfo;
  const struct {
    const char* opcode;
    std::vector<std::string> args;
    std::vector<Query> expected;
  } cases[] = {
      {"s_cbranch_vccz", {"BB0_1"}, {&I::ReadsVCCZ, &I::UsesBranch}},
      {"v_cndmask_b32", {"v0", "v1", "v2", "vcc_lo"}, {&I::ReadsVCC, &I::ReadsLaneMask}},
      {"v_add_co_u32", {"v0", "vcc_lo", "v1", "v2"}, {&I::WritesVCC, &I::WriteLaneMask}},
      {"v_cmpx_eq_u32", {"v1", "v2"}, {&I::WritesExec, &I::WriteLaneMask}},
      {"v_div_fmas_f32",
       {"v0", "v1", "v2", "v3"},
       {&I::IsDiv_FMas, &I::WriteLaneMask, &I::ReadsVCC}},
      {"s_mov_b32", {"m0", "s1"}, {&I::WritesM0, &I::ReadsAnySGPR}},
      {"v_movreld_b32", {"v0", "v1"}, {&I::IsMoveRel}},
      {"v_readfirstlane_b32", {"s0", "v1"}, {&I::IsReadFirstLane}},
      {"v_swap_b32", {"v0", "v1"}, {&I::IsSpecial}},
      {"s_getpc_b64", {"s[0:1]"}, {&I::IsPCReadEtc}},
      {"s_sendmsg", {"sendmsg(MSG_INTERRUPT)"}, {&I::UsesMsg}},
      {"exp", {"mrt0", "v0", "v1", "v2", "v3"}, {&I::UsesExport}},
  };
  for (const auto& c : cases) {
    const InvocationDependencyInfo& info = Info(c.opcode, c.args);
    for (size_t i = 0; i < c.expected.size(); ++i)
      EXPECT_TRUE((info.*c.expected[i])()) << c.opcode << " query " << i;
  }
  // m0 is special: writing it alone is no standard SGPR write (nor, by the
  // written-SGPR rule, a standard SGPR read).
  EXPECT_FALSE(infos_[5]->WritesAnyStandardSGPR() || infos_[5]->ReadsAnyStandardSGPR());
  EXPECT_FALSE(infos_[0]->ReadsVCC());  // the branch reads only the condition bit
}

// The record keeps its register sets as runs of consecutive numbers (inline,
// or on the heap when there are many); the sets it gives back and the
// register walks of the simulation must hold exactly the invocation's
// registers plus the implicit ones, in ascending order, split at the
// vector/scalar and standard/special boundaries.
TEST_F(DependencyInfoTest, RegisterRunsGiveBackTheSets) {
  const struct {
    const char* opcode;
    std::vector<std::string> args;
  } cases[] = {
      {"s_nop", {"0"}},
      {"v_fma_f32", {"v39", "v2", "v70", "v41"}},
      {"v_cndmask_b32", {"v21", "v61", "v46", "vcc_lo"}},
      {"v_mad_u64_u32", {"v[0:1]", "s0", "v2", "v3", "v[4:5]"}},
      {"v_add_co_u32", {"v255", "vcc_lo", "v254", "s0"}},
      {"s_add_u32", {"s127", "s126", "m0"}},
      {"s_and_saveexec_b32", {"s0", "vcc_lo"}},
      {"buffer_store_dword", {"v7", "v54", "s[4:7]", "0", "offen"}},
      {"s_load_dwordx16", {"s[8:23]", "s[0:1]", "0x0"}},
      // More runs than fit in the record: kept on the heap.
      {"image_sample",
       {"v[0:3]", "v4", "v6", "v8", "v10", "v12", "v14", "v16", "s[0:7]", "s[8:11]"}},
      {"v_fma_f32", {"v1", "s3", "v5", "v9"}},
      // Seven runs: v0-v1, s2-s3, vcc written; v4, s6, exec, m0 read.
      {"v_mad_u64_u32", {"v[0:1]", "s[2:3]", "v4", "s6", "m0"}},
  };
  int mostRuns = 0;
  for (const auto& c : cases) {
    const InvocationDependencyInfo& info = Info(c.opcode, c.args);
    const Invocation& invocation = invocations_.back();
    UnifiedRegisterSet reads = invocation.GetReadRegisters();
    UnifiedRegisterSet writes = invocation.GetWriteRegisters();
    for (RegisterID reg : info.GetImplicitReadSGPRs()) reads.Insert(reg);
    for (RegisterID reg : info.GetImplicitWriteSGPRs()) writes.Insert(reg);
    EXPECT_EQ(info.GetReadRegisters(), reads) << c.opcode;
    EXPECT_EQ(info.GetWriteRegisters(), writes) << c.opcode;

    auto walk = [](auto forEach) {
      std::vector<RegisterID> regs;
      forEach([&](RegisterID reg) { regs.push_back(reg); });
      return regs;
    };
    auto members = [](const UnifiedRegisterSet& set) {
      return std::vector<RegisterID>(set.begin(), set.end());
    };
    EXPECT_EQ(walk([&](auto f) { info.ForEachWriteRegister(f); }), members(writes)) << c.opcode;
    EXPECT_EQ(walk([&](auto f) { info.ForEachWrittenSGPR(f); }), members(info.GetWrittenSGPRs()))
        << c.opcode;
    EXPECT_EQ(walk([&](auto f) { info.ForEachWrittenVGPR(f); }), members(info.GetWrittenVGPRs()))
        << c.opcode;
    EXPECT_EQ(walk([&](auto f) { info.ForEachReadSGPR(f); }), members(info.GetReadSGPRs()))
        << c.opcode;
    EXPECT_EQ(walk([&](auto f) { info.ForEachReadVGPR(f); }), members(info.GetReadVGPRs()))
        << c.opcode;
    const UnifiedRegisterSet explicitReads = info.GetExplicitReadSGPRs();
    EXPECT_EQ(walk([&](auto f) { info.ForEachExplicitReadSGPR(f); }), members(explicitReads))
        << c.opcode;
    EXPECT_EQ(info.CountWrittenSGPRs(), info.GetWrittenSGPRs().Count()) << c.opcode;
    EXPECT_EQ(info.CountReadVGPRs(), info.GetReadVGPRs().Count()) << c.opcode;
    EXPECT_EQ(info.CountExplicitReadSGPRs(), explicitReads.Count()) << c.opcode;
    EXPECT_EQ(info.ExplicitlyReads(kVcc), explicitReads.Contains(kVcc)) << c.opcode;
    int highest = -1;
    for (RegisterID reg : reads) highest = std::max(highest, static_cast<int>(reg));
    for (RegisterID reg : writes) highest = std::max(highest, static_cast<int>(reg));
    EXPECT_EQ(info.GetHighestRegister(), highest) << c.opcode;
    int runs = 0;
    for (const UnifiedRegisterSet* set : {&reads, &writes}) {
      int previous = -2;
      for (RegisterID reg : *set) runs += reg != previous + 1, previous = reg;
    }
    mostRuns = std::max(mostRuns, runs);
  }
  EXPECT_GT(mostRuns, 6) << "no case keeps its runs on the heap";
}

}  // namespace
}  // namespace vesk::testing
