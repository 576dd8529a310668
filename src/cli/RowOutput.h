// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Rows of a table as they are read: none is kept.

#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/Command.h"
#include "core/Dataset.h"

namespace velmora {

class TRowOutput {
 public:
  virtual ~TRowOutput() = default;
  virtual void Begin(const std::vector<TFieldDef>& fields) = 0;
  virtual void Row(const TDataset& rows) = 0;                     // the current one
  virtual void End(const std::optional<std::string>& error) = 0;  // also without a Begin
};

// Text has a line of names and a line per row, tabs between values, with \t, \n, \r and \\ in them, and NULL for null;
// bytes are in base64, as in JSON. JSON is one document; a number is one even where it has more digits than a float.
std::unique_ptr<TRowOutput> MakeRowOutput(EFormat format, std::ostream& out);

}  // namespace velmora
