// Register naming and numbering: the two register classes, the unified
// register number shared by both classes (the index of every per-register
// table of the timing model), the special scalar register names, and the two
// fixed-size register set types.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <vector>

namespace vesk {

enum RegisterType : int { VGPR = 0, SGPR = 1 };
// The class of a register-list element that follows no v/s element.
constexpr RegisterType kNoRegisterType = static_cast<RegisterType>(-1);

struct Register {
  int index = 0;
  RegisterType type = VGPR;
  bool operator==(const Register&) const = default;
};

// v0..v255 are 0..255, s0..s127 are 256..383 (ttmp0..15 alias s112..s127),
// and the special scalar registers exec, vcc, scc, sccz, m0, vccz, execz are
// 384..390.
using RegisterID = int;
constexpr int kRegisterIdCount = 391;
constexpr RegisterID kFirstSGPR = 256;
constexpr RegisterID kFirstSpecialSGPR = 384;
// The special scalar registers: the 64-bit exec and vcc masks (their low
// halves share the numbers), the scalar condition code, m0, and the
// condition bits that branches test.
constexpr RegisterID kExec = 384;
constexpr RegisterID kVcc = 385;
constexpr RegisterID kScc = 386;
constexpr RegisterID kSccz = 387;
constexpr RegisterID kM0 = 388;
constexpr RegisterID kVccz = 389;
constexpr RegisterID kExecz = 390;

constexpr bool IsVGPR(RegisterID id) {
  return static_cast<unsigned>(id) <= 255u;
}
constexpr bool IsAnySGPR(RegisterID id) {
  return static_cast<unsigned>(id - 256) <= 134u;
}
constexpr bool IsStandardSGPR(RegisterID id) {
  return static_cast<unsigned>(id - 256) <= 127u;
}
constexpr bool IsSpecialSGPR(RegisterID id) {
  return static_cast<unsigned>(id - 384) <= 6u;
}
constexpr int GetSGPRIndex(RegisterID id) {
  return id - 256;
}
constexpr int GetVGPRIndex(RegisterID id) {
  return id;
}

// Special scalar register names ("exec", "vcc_lo", "ttmp4", ...), exact and
// case-sensitive. Ordinary s/v registers are not in this table.
bool TryGetSpecialRegisterID(const char* name, RegisterID& out);
// The name must be one of the special register names.
RegisterID GetSpecialRegisterID(const char* name);

// A set of the integers 0..N-1 held as N bits; no heap storage.
template <int N>
class SmallIntSet {
  static_assert(N % 64 == 0, "SmallIntSet holds whole 64-bit words");

 public:
  static constexpr int kWords = N / 64;

  class Iterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = int;
    using difference_type = std::ptrdiff_t;
    using pointer = const int*;
    using reference = int;

    Iterator() = default;
    Iterator(const SmallIntSet* set, int index) : set_(set), index_(index) {}
    int operator*() const { return index_; }
    Iterator& operator++() {
      index_ = set_->NextFrom(index_ + 1);
      return *this;
    }
    Iterator operator++(int) {
      Iterator old = *this;
      ++*this;
      return old;
    }
    bool operator==(const Iterator& other) const { return index_ == other.index_; }

   private:
    const SmallIntSet* set_ = nullptr;
    int index_ = 0;
  };

  constexpr SmallIntSet() = default;
  SmallIntSet(std::initializer_list<int> values) {
    for (int v : values) Insert(v);
  }

  void Insert(int value) { words_[value >> 6] |= uint64_t{1} << (value & 63); }
  void Erase(int value) { words_[value >> 6] &= ~(uint64_t{1} << (value & 63)); }
  bool Contains(int value) const { return (words_[value >> 6] >> (value & 63)) & 1u; }
  int Count() const {
    int count = 0;
    for (uint64_t w : words_) count += std::popcount(w);
    return count;
  }
  bool IsEmpty() const {
    for (uint64_t w : words_)
      if (w) return false;
    return true;
  }
  // Highest member, or -1 when empty.
  int Last() const {
    for (int w = kWords - 1; w >= 0; --w)
      if (words_[w]) return w * 64 + 63 - std::countl_zero(words_[w]);
    return -1;
  }
  SmallIntSet& operator|=(const SmallIntSet& other) {
    for (int w = 0; w < kWords; ++w) words_[w] |= other.words_[w];
    return *this;
  }
  // Difference: removes every member of `other`.
  SmallIntSet& operator-=(const SmallIntSet& other) {
    for (int w = 0; w < kWords; ++w) words_[w] &= ~other.words_[w];
    return *this;
  }
  SmallIntSet operator|(const SmallIntSet& other) const { return SmallIntSet(*this) |= other; }
  SmallIntSet operator-(const SmallIntSet& other) const { return SmallIntSet(*this) -= other; }
  bool operator==(const SmallIntSet&) const = default;

  Iterator begin() const { return Iterator(this, NextFrom(0)); }
  Iterator end() const { return Iterator(this, N); }

  const std::array<uint64_t, kWords>& Words() const { return words_; }
  std::array<uint64_t, kWords>& Words() { return words_; }

  // Smallest member >= from, or N when there is none.
  int NextFrom(int from) const {
    if (from >= N) return N;
    int w = from >> 6;
    uint64_t bits = words_[w] & (~uint64_t{0} << (from & 63));
    while (true) {
      if (bits) return w * 64 + std::countr_zero(bits);
      if (++w == kWords) return N;
      bits = words_[w];
    }
  }

 private:
  std::array<uint64_t, kWords> words_{};
};

static_assert(sizeof(SmallIntSet<256>) == 32, "a register class set is four 64-bit words");

// Both register classes at once: the VGPR index set, then the SGPR index set
// (special registers at SGPR index 128..134).
class UnifiedRegisterSet {
 public:
  using Half = SmallIntSet<256>;

  class IndexIterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = int;
    using difference_type = std::ptrdiff_t;
    using pointer = const int*;
    using reference = int;

    IndexIterator() = default;
    explicit IndexIterator(const UnifiedRegisterSet* set);
    RegisterID operator*() const { return sgprPhase_ ? index_ + 256 : index_; }
    IndexIterator& operator++();
    IndexIterator operator++(int) {
      IndexIterator old = *this;
      ++*this;
      return old;
    }
    bool operator==(const IndexIterator& other) const {
      return set_ == other.set_ && half_ == other.half_ && index_ == other.index_ &&
             sgprPhase_ == other.sgprPhase_;
    }

   private:
    const UnifiedRegisterSet* set_ = nullptr;
    const Half* half_ = nullptr;
    int index_ = 0;
    bool sgprPhase_ = false;
  };

  UnifiedRegisterSet() = default;
  UnifiedRegisterSet(std::initializer_list<int> vgprs, std::initializer_list<int> sgprs);
  explicit UnifiedRegisterSet(std::initializer_list<RegisterID> ids);
  explicit UnifiedRegisterSet(const std::vector<RegisterID>& ids);

  Half& GetVGPRSet() { return vgprs_; }
  const Half& GetVGPRSet() const { return vgprs_; }
  Half& GetSGPRSet() { return sgprs_; }
  const Half& GetSGPRSet() const { return sgprs_; }

  // Ids above the vector registers are scalar (SGPR index = id - 256); an id
  // outside both 256-wide halves (only from malformed text) is in no set.
  void Insert(RegisterID id) {
    if (static_cast<uint32_t>(id) > 511) return;
    if (id > 255) {
      sgprs_.Insert(id - 256);
    } else {
      vgprs_.Insert(id);
    }
  }
  bool IsEmpty() const { return vgprs_.IsEmpty() && sgprs_.IsEmpty(); }
  int Count() const { return vgprs_.Count() + sgprs_.Count(); }
  bool Contains(RegisterID id) const {
    if (static_cast<uint32_t>(id) > 511) return false;
    return id > 255 ? sgprs_.Contains(GetSGPRIndex(id)) : vgprs_.Contains(GetVGPRIndex(id));
  }
  // Highest index within its class; scalar registers win over vector ones.
  int Last() const;
  UnifiedRegisterSet& operator|=(const UnifiedRegisterSet& other) {
    vgprs_ |= other.vgprs_;
    sgprs_ |= other.sgprs_;
    return *this;
  }
  bool operator==(const UnifiedRegisterSet& other) const {
    return sgprs_ == other.sgprs_ && vgprs_ == other.vgprs_;
  }

  IndexIterator begin() const { return IndexIterator(this); }
  IndexIterator end() const { return IndexIterator(); }

 private:
  Half vgprs_;
  Half sgprs_;
};

}  // namespace vesk
