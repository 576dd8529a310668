#pragma once

#include <iconv.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace velmora {

// The code page of a DBF file, by the number in its head (the numbers are published with the documentation of Visual
// FoxPro, "Code Pages Supported by Visual FoxPro"). The system's iconv does the work and is asked when first needed.
class TDbfCodePage {
 public:
  // 0, and a number that stands for no page known here, is `unstated`, a name of iconv's.
  TDbfCodePage(std::uint8_t number, const char* unstated);
  explicit TDbfCodePage(std::string name) : name_(std::move(name)) {}

  // As UTF-8; what is no letter of the page becomes U+FFFD. Raises "Cannot convert from %s: %s" for a page that this
  // system's iconv lacks. Letters of ASCII alone cost no conversion.
  std::string Decode(std::string_view bytes) const;

 private:
  struct TClose {
    void operator()(iconv_t converter) const { iconv_close(converter); }
  };

  std::string name_;
  mutable std::unique_ptr<std::remove_pointer_t<iconv_t>, TClose> converter_;
};

// iconv's name for a page as people and files name it: "1251", "CP1251", "ANSI 1251", "UTF-8", "88591". Nothing where
// this system knows no such page.
std::optional<std::string> CodePageNamed(std::string_view text);

}  // namespace velmora
