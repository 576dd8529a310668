// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Facts that are written down as text, in place of a source:
//
//   table NAME [comment TEXT]
//     COLUMN FAMILY[(NUMBERS)] [not null] [counts] [comment TEXT] [default TEXT]
//     primary|unique|plain NAME COLUMN[ desc], ...
//     reference NAME COLUMN, ... to TABLE COLUMN, ... [delete RULE] [update RULE]
//     check [COLUMN:] TEXT
//     problem TEXT
//
// Lines before the first table may be wishes, as a task file keeps them: "wish WISH".
// Numbers are precision and scale, a length or a fraction, as the family has them; with a "b" a length is one of bytes.

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "foreign/Facts.h"
#include "foreign/ForeignWishes.h"

namespace velmora::testing {

inline constexpr TKnownFacts kAllFacts = {
    EFact::Nullability, EFact::Defaults, EFact::Counting, EFact::PrimaryKey,     EFact::OtherKeys,   EFact::References,
    EFact::Rules,       EFact::Checks,   EFact::Order,    EFact::ColumnComments, EFact::TableComment};

std::vector<TForeignTable> ReadFacts(const std::string& text);
TForeignWishes ReadWishes(const std::string& text);       // of the same text
TForeignColumn ReadColumnFacts(const std::string& text);  // "COLUMN FAMILY ..."

class TPlayedFacts final : public TFactReader {
 public:
  explicit TPlayedFacts(std::vector<TForeignTable> tables, TKnownFacts known = kAllFacts)
      : tables_(std::move(tables)), known_(known) {}

  TKnownFacts Known() const override { return known_; }
  TStringList Tables() override;
  TForeignTable Table(const std::string& name) override;
  bool Reachable() override { return true; }

 private:
  std::vector<TForeignTable> tables_;
  TKnownFacts known_;
};

}  // namespace velmora::testing
