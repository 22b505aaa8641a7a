// Special register name table and the unified register set.
#include "isa/registers.h"

#include <cassert>
#include <string_view>
#include <unordered_map>

namespace vesk {

namespace {

// The 64-bit exec and vcc and their low halves share one number each; the
// condition bits sccz/vccz/execz are tracked as registers of their own.
const std::unordered_map<std::string_view, RegisterID>& SpecialRegisters() {
  static const std::unordered_map<std::string_view, RegisterID> table = [] {
    static const char* const kTtmp[16] = {"ttmp0",  "ttmp1",  "ttmp2",  "ttmp3", "ttmp4",  "ttmp5",
                                          "ttmp6",  "ttmp7",  "ttmp8",  "ttmp9", "ttmp10", "ttmp11",
                                          "ttmp12", "ttmp13", "ttmp14", "ttmp15"};
    std::unordered_map<std::string_view, RegisterID> map;
    for (int i = 0; i < 16; ++i) map.emplace(kTtmp[i], 368 + i);
    map.emplace("exec", kExec);
    map.emplace("exec_lo", kExec);
    map.emplace("vcc", kVcc);
    map.emplace("vcc_lo", kVcc);
    map.emplace("scc", kScc);
    map.emplace("sccz", kSccz);
    map.emplace("m0", kM0);
    map.emplace("vccz", kVccz);
    map.emplace("execz", kExecz);
    return map;
  }();
  return table;
}

// Fill the table before the analysis starts, not lazily on a hot path.
[[maybe_unused]] const bool kSpecialRegistersReady = (SpecialRegisters(), true);

}  // namespace

bool TryGetSpecialRegisterID(const char* name, RegisterID& out) {
  const auto& table = SpecialRegisters();
  auto it = table.find(name);
  if (it == table.end()) return false;
  out = it->second;
  return true;
}

RegisterID GetSpecialRegisterID(const char* name) {
  RegisterID id = 0;
  [[maybe_unused]] const bool found = TryGetSpecialRegisterID(name, id);
  assert(found && "not a special register name");
  return id;
}

UnifiedRegisterSet::UnifiedRegisterSet(std::initializer_list<int> vgprs,
                                       std::initializer_list<int> sgprs) {
  for (int v : vgprs) vgprs_.Insert(v);
  for (int s : sgprs) sgprs_.Insert(s);
}

UnifiedRegisterSet::UnifiedRegisterSet(std::initializer_list<RegisterID> ids) {
  for (RegisterID id : ids) Insert(id);
}

UnifiedRegisterSet::UnifiedRegisterSet(const std::vector<RegisterID>& ids) {
  for (RegisterID id : ids) Insert(id);
}

int UnifiedRegisterSet::Last() const {
  if (!sgprs_.IsEmpty()) return sgprs_.Last();
  if (!vgprs_.IsEmpty()) return vgprs_.Last();
  return 0;
}

UnifiedRegisterSet::IndexIterator::IndexIterator(const UnifiedRegisterSet* set) {
  int first = set->vgprs_.NextFrom(0);
  if (first < 256) {
    set_ = set;
    half_ = &set->vgprs_;
    index_ = first;
    return;
  }
  first = set->sgprs_.NextFrom(0);
  if (first < 256) {
    set_ = set;
    half_ = &set->sgprs_;
    index_ = first;
    sgprPhase_ = true;
  }
}

UnifiedRegisterSet::IndexIterator& UnifiedRegisterSet::IndexIterator::operator++() {
  int next = half_->NextFrom(index_ + 1);
  if (next < 256) {
    index_ = next;
    return *this;
  }
  if (!sgprPhase_) {
    next = set_->sgprs_.NextFrom(0);
    if (next < 256) {
      half_ = &set_->sgprs_;
      index_ = next;
      sgprPhase_ = true;
      return *this;
    }
  }
  *this = IndexIterator();
  return *this;
}

}  // namespace vesk
