// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Defaults of a source in MySQL's language.

#include <optional>
#include <string>

#include "foreign/Facts.h"
#include "foreign/TargetServer.h"
#include "mysqltext/ColumnType.h"

namespace velmora {

struct TMadeDefault {
  std::string text{};    // as a column's text has it after "default"; empty for none
  std::string reason{};  // why the source's has no form in MySQL; empty where it has one, or the source has none
};

// Of a column that becomes one of `type`.
TMadeDefault MakeDefault(const TForeignColumn& column, const TColumnText& type, const TTargetServer& server);

}  // namespace velmora
