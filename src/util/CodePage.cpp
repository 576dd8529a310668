// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/CodePage.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <system_error>

#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kCannotConvert[] = "Cannot convert from %s: %s";
constexpr std::string_view kNoLetter = "\xEF\xBF\xBD";

// Turns what is left of the bytes into letters, up to one that is none, and gives whether all went. Without bytes the
// converter lets go of a letter that it has kept for an accent that might have followed.
bool Convert(iconv_t converter, char** from, std::size_t* left, std::string& text) {
  std::array<char, 1024> room{};
  for (;;) {
    char* to = room.data();
    std::size_t space = room.size();
    const bool done = iconv(converter, from, left, &to, &space) != static_cast<std::size_t>(-1);
    const bool full = !done && errno == E2BIG;
    text.append(room.data(), to);
    if (!full) return done;
  }
}

}  // namespace

bool TCodePage::Open() const {
  if (converter_) return true;
  const iconv_t converter = iconv_open("UTF-8", name_.c_str());
  if (reinterpret_cast<std::intptr_t>(converter) == -1) return false;
  converter_.reset(converter);
  return true;
}

bool TCodePage::Known() const { return Open(); }

std::string TCodePage::Decode(std::string_view bytes) const {
  if (std::ranges::all_of(bytes, [](char c) { return static_cast<unsigned char>(c) < 0x80; }))
    return std::string(bytes);
  if (!Open()) RaiseError(Format(kCannotConvert, name_, std::generic_category().message(errno)));
  const iconv_t converter = converter_.get();
  iconv(converter, nullptr, nullptr, nullptr, nullptr);
  std::string text;
  char* from = const_cast<char*>(bytes.data());  // never written to
  std::size_t left = bytes.size();
  while (!Convert(converter, &from, &left, text) && left > 0) {
    Convert(converter, nullptr, nullptr, text);
    text += kNoLetter;
    ++from;
    --left;
  }
  Convert(converter, nullptr, nullptr, text);
  return text;
}

}  // namespace velmora
