// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Creation texts of a reference that is not MySQL: facts, mapped, completed from the target.

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "exact/run/TextMaker.h"
#include "foreign/Facts.h"
#include "foreign/MappedSchema.h"
#include "foreign/Tolerance.h"

namespace velmora {

class TForeignTexts final : public TTextMaker {
 public:
  TForeignTexts(std::unique_ptr<TFactReader> reader, TForeignWishes wishes);
  // Of a connected engine that has a fact reader, and outlives this object.
  TForeignTexts(TDBConn& reference, TForeignWishes wishes);

  // Raises for a source without tables, too: that is a wrong place more often than a wish.
  // The first is for a target that is not there: only this server is known of it.
  void Read(const TTargetServer& server, const TTargetNames& names_there,
            const std::function<void(const std::string& table, std::size_t count)>& step);

  void Read(TDBConn& target, const TStringList& target_tables,
            const std::function<void(const std::string& table, std::size_t count)>& step) override;
  TStringList Tables() const override;
  TMadeTable Make(const std::string& table, const TTableText* there) override;
  bool DropsObsolete() const override { return context_.wishes.drop_obsolete; }
  std::vector<TUnmadeElement> Unmade() const override { return Unmade(false); }
  std::vector<TUnmadeElement> Accepted() const override { return Unmade(true); }
  std::vector<TMadeColumn> Columns() const override;
  TStringList Log() const override;

 private:
  TForeignTable ReadTable(const std::string& name) const;
  bool Accepted(const TUnmadeElement& element) const;
  bool IsThere(const std::string& accepted) const;
  bool Decides(const TMapRule& rule) const;
  std::vector<TUnmadeElement> Unmade(bool accepted) const;

  std::unique_ptr<TFactReader> reader_;
  TMapContext context_;
  std::vector<TMappedTable> tables_;  // parents before those that refer to them
  std::map<std::string, std::size_t> places_;
  std::set<std::size_t> parents_;                               // tables whose types or collations others take
  std::map<std::size_t, std::vector<TSettledColumn>> settled_;  // of these, by table
  TToleranceCounts counts_;
};

}  // namespace velmora
