#pragma once

// Column types of the server: as they are declared, as the catalog tells them, and as they and their values go over
// the wire.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "support/tds/TdsBytes.h"

namespace velmora::testing {

struct TTdsTypeRow {
  std::string_view name;
  unsigned token;        // of the protocol
  int size;              // bytes of a value; of long types the bound; 0: as declared
  int precision, scale;  // of the catalog; -1: null, 0: as declared
};

// A declared type: "int", "decimal(9,2)", "nvarchar(max)". What follows the brackets does not count, but for the word
// "identity".
class TTdsType {
 public:
  explicit TTdsType(std::string_view declared);  // raises for an unknown name

  const std::string_view& Name() const { return row_->name; }
  bool Identity() const { return identity_; }
  bool Binary() const;  // its values are bytes, not text
  std::optional<int> Characters() const;
  std::optional<int> Precision() const;
  std::optional<int> Scale() const;

  // TYPE_INFO, for the protocol of a version such as 0x704. A type that the version does not know goes as an older one.
  void PutInfo(TTdsWriter& out, int version) const;
  // One value as text, of binary types as bytes.
  void PutValue(TTdsWriter& out, int version, const std::optional<std::string>& value) const;

 private:
  bool Long() const { return row_->token == 0x22 || row_->token == 0x23 || row_->token == 0x63; }
  bool Wide() const;
  std::string Encoded(const std::string& value) const;
  std::string EncodedNumber(const std::string& value) const;
  std::string EncodedTime(const std::string& value) const;
  TTdsType For(int version) const;

  const TTdsTypeRow* row_;
  int first_ = 0, second_ = 0;  // what stands in brackets
  bool max_ = false, identity_ = false;
};

}  // namespace velmora::testing
