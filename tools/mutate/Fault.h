// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What the faults of scripts/mutate are made of. It is read before every source of a build with faults: each of them
// has a number, and is there only in a run whose variable VELMORA_FAULT is that number. Whatever cannot be faulty by
// its type does not compile, and is left out by the program.

#if __cplusplus >= 202002L  // CMake also tries the compiler as it is

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <type_traits>
#include <utility>

namespace velmora_fault {

inline int Chosen() {
  static const int chosen = [] {
    const char* text = std::getenv("VELMORA_FAULT");
    return text == nullptr ? 0 : std::atoi(text);
  }();
  return chosen;
}

// Writes the number of a fault that is come by to the file of VELMORA_FAULT_TRACE, if there is such a variable; at
// once, since children may end without a word.
inline void Trace(int number) {
  static const char* const path = std::getenv("VELMORA_FAULT_TRACE");
  if (path == nullptr) return;
  const int file = open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  char line[16];
  const int size = std::snprintf(line, sizeof line, "%d\n", number);
  if (file >= 0 && write(file, line, static_cast<std::size_t>(size)) >= 0) close(file);
}

template <int N>
bool Is() {
  static std::atomic<bool> traced = false;
  if (!traced.exchange(true)) Trace(N);
  return Chosen() == N;
}

// `a < b` is written as `a < Lt<7>{} < b`, which has the same precedence: the left operand is held until the right one
// is there.
template <class L, class Op>
struct THeld {
  L&& left;
};
#define VELMORA_FAULT_TURNED(name, op, other)                                \
  template <int N>                                                           \
  struct name {};                                                            \
  template <class L, int N>                                                  \
  THeld<L, name<N>> operator op(L&& left, name<N>) {                         \
    return {static_cast<L&&>(left)};                                         \
  }                                                                          \
  template <class L, int N, class R>                                         \
  bool operator op(THeld<L, name<N>>&& held, R&& right) {                    \
    return Is<N>() ? bool(held.left other right) : bool(held.left op right); \
  }
VELMORA_FAULT_TURNED(Lt, <, <=)
VELMORA_FAULT_TURNED(Le, <=, <)
VELMORA_FAULT_TURNED(Gt, >, >=)
VELMORA_FAULT_TURNED(Ge, >=, >)
VELMORA_FAULT_TURNED(Eq, ==, !=)
VELMORA_FAULT_TURNED(Ne, !=, ==)
#undef VELMORA_FAULT_TURNED

template <int N, class Right>
bool And(bool left, Right right) {
  return Is<N>() ? left || right() : left && right();
}
template <int N, class Right>
bool Or(bool left, Right right) {
  return Is<N>() ? left && right() : left || right();
}

template <int N>
bool Taken(bool condition) {
  return condition && !Is<N>();
}

template <int N, class T>
T OffByOne(T number) {
  return Is<N>() ? static_cast<T>(number + 1) : number;
}

template <int N, class T>
requires std::is_arithmetic_v<std::remove_cvref_t<T>> std::remove_cvref_t<T> Returned(T&& value) {
  using TValue = std::remove_cvref_t<T>;
  if constexpr (std::is_same_v<TValue, bool>)
    return Is<N>() ? !value : value;
  else
    return Is<N>() ? static_cast<TValue>(value + 1) : value;
}
template <int N, class T>
T* Returned(T* value) {
  return Is<N>() ? nullptr : value;
}
template <int N>
std::string Returned(std::string&& text) {
  if (Is<N>()) text = text.empty() ? "fault" : "";
  return std::move(text);
}

}  // namespace velmora_fault

#endif
