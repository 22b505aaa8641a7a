// StallLength: a cycle count for the stall simulation with one sticky
// "indefinite" value (the largest 32-bit signed integer) for waits that only
// end when a hardware counter signals completion, e.g. outstanding memory
// operations.
#pragma once

#include <cstdint>
#include <limits>

namespace vesk {

class StallLength {
 public:
  static constexpr int32_t kIndefinite = std::numeric_limits<int32_t>::max();

  constexpr StallLength() = default;
  // Implicit on purpose: cycle counts and stall lengths mix freely.
  constexpr StallLength(int value) { Set(value); }

  // Once indefinite, a length only changes by copy-assigning another
  // StallLength; Set and assignment from int leave it indefinite.
  constexpr void Set(int value) {
    if (!IsIndefinite())
      value_ = value;
  }
  constexpr void SetIndefinite() { value_ = kIndefinite; }
  constexpr StallLength& operator=(int value) {
    Set(value);
    return *this;
  }

  constexpr bool IsIndefinite() const { return value_ == kIndefinite; }
  constexpr bool IsZero() const { return value_ == 0; }
  constexpr int Get() const { return value_; }
  constexpr operator int() const { return value_; }

  constexpr StallLength& operator++() {
    if (!IsIndefinite())
      ++value_;
    return *this;
  }
  constexpr StallLength& operator--() {
    if (!IsIndefinite())
      --value_;
    return *this;
  }
  constexpr StallLength operator++(int) {
    StallLength old = *this;
    ++*this;
    return old;
  }
  constexpr StallLength operator--(int) {
    StallLength old = *this;
    --*this;
    return old;
  }

  // Indefinite on either side gives indefinite; finite values are added or
  // subtracted without overflow check and may go negative.
  constexpr StallLength& operator+=(const StallLength& other) {
    if (IsIndefinite() || other.IsIndefinite()) {
      value_ = kIndefinite;
    } else {
      value_ += other.value_;
    }
    return *this;
  }
  constexpr StallLength& operator-=(const StallLength& other) {
    if (IsIndefinite() || other.IsIndefinite()) {
      value_ = kIndefinite;
    } else {
      value_ -= other.value_;
    }
    return *this;
  }
  constexpr StallLength& operator+=(int other) { return *this += StallLength(other); }
  constexpr StallLength& operator-=(int other) { return *this -= StallLength(other); }

  friend constexpr StallLength operator+(StallLength a, const StallLength& b) { return a += b; }
  friend constexpr StallLength operator-(StallLength a, const StallLength& b) { return a -= b; }
  friend constexpr StallLength operator+(StallLength a, int b) { return a += b; }
  friend constexpr StallLength operator-(StallLength a, int b) { return a -= b; }

  // Plain signed comparison of the raw values: indefinite is greater than
  // every finite length. The int overloads keep mixed comparisons unambiguous.
  friend constexpr bool operator==(const StallLength& a, const StallLength& b) {
    return a.value_ == b.value_;
  }
  friend constexpr bool operator!=(const StallLength& a, const StallLength& b) {
    return a.value_ != b.value_;
  }
  friend constexpr bool operator<(const StallLength& a, const StallLength& b) {
    return a.value_ < b.value_;
  }
  friend constexpr bool operator<=(const StallLength& a, const StallLength& b) {
    return a.value_ <= b.value_;
  }
  friend constexpr bool operator>(const StallLength& a, const StallLength& b) {
    return a.value_ > b.value_;
  }
  friend constexpr bool operator>=(const StallLength& a, const StallLength& b) {
    return a.value_ >= b.value_;
  }
  friend constexpr bool operator==(const StallLength& a, int b) { return a.value_ == b; }
  friend constexpr bool operator!=(const StallLength& a, int b) { return a.value_ != b; }
  friend constexpr bool operator<(const StallLength& a, int b) { return a.value_ < b; }
  friend constexpr bool operator<=(const StallLength& a, int b) { return a.value_ <= b; }
  friend constexpr bool operator>(const StallLength& a, int b) { return a.value_ > b; }
  friend constexpr bool operator>=(const StallLength& a, int b) { return a.value_ >= b; }
  friend constexpr bool operator==(int a, const StallLength& b) { return a == b.value_; }
  friend constexpr bool operator!=(int a, const StallLength& b) { return a != b.value_; }
  friend constexpr bool operator<(int a, const StallLength& b) { return a < b.value_; }
  friend constexpr bool operator<=(int a, const StallLength& b) { return a <= b.value_; }
  friend constexpr bool operator>(int a, const StallLength& b) { return a > b.value_; }
  friend constexpr bool operator>=(int a, const StallLength& b) { return a >= b.value_; }

 private:
  int32_t value_ = 0;
};

}  // namespace vesk
