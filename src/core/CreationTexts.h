#pragma once

#include <string>

#include "util/Lists.h"

namespace velmora {

// What an engine also implements that can give the creation text of a table as its server prints it.
class TCreationTexts {
 public:
  // Asks for the text, and stores it into the table's `cached_ddl` as well.
  virtual void ShowCreateTable(const std::string& table, std::string& ddl) = 0;
  // A hint: the texts of these tables will be asked for next, in this order. A client may read ahead; an error of a
  // table that nobody asks for never shows.
  virtual void ExpectCreationTexts(const TStringList& /*tables*/) {}

 protected:
  ~TCreationTexts() = default;
};

}  // namespace velmora
