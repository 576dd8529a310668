// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <iconv.h>

#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace velmora {

// The letters of a code page that keeps those of ASCII, by a name of the system's iconv, which does the work and is
// asked when first needed.
class TCodePage {
 public:
  explicit TCodePage(std::string name) : name_(std::move(name)) {}

  bool Known() const;  // to this system
  // As UTF-8; what is no letter of the page becomes U+FFFD. Raises "Cannot convert from %s: %s" for a page that the
  // system does not know, unless the letters are of ASCII alone: these cost no conversion.
  std::string Decode(std::string_view bytes) const;

 private:
  struct TClose {
    void operator()(iconv_t converter) const { iconv_close(converter); }
  };
  bool Open() const;

  std::string name_;
  mutable std::unique_ptr<std::remove_pointer_t<iconv_t>, TClose> converter_;
};

}  // namespace velmora
