// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "app/Dialect.h"
#include "sync/ScriptGenerator.h"
#include "sync/Sync.h"

namespace velmora {

// The described comparison: its actions are all that it finds, and nothing of it is unsafe. The texts of a table are
// built of what was read.
class TStandardDialect final : public TDialect {
 public:
  explicit TStandardDialect(const TDialectParts& parts);

  void Take(const TComparisonWishes& wishes) override;
  std::unique_ptr<TDBConn> Compare() override;
  bool TablesIdentical() const override { return parts_.data.mtActions.Empty(); }
  bool Identical() const override { return TablesIdentical(); }
  const TStringList& ActionLog() const override { return sync_.ActionLog; }
  std::vector<TRemark> Remarks(TDBConn* compared) const override;
  bool ReferenceIsEmpty() const override;
  const std::string& TableUnderWay() const override { return sync_.TableUnderWay(); }
  bool TargetLost() const override { return sync_.TargetLost(); }
  void TableTexts(const std::string& table, std::string& reference, std::string& target) override;
  int VerifyOnServer(const TScratchPorts& ports) override;  // always raises
  void GenerateScript() override;
  TScriptPieces Statements(const std::string& script) const override { return SplitScript(script); }
  void RunScript(const std::string& text, const TRunCare& /*care*/) override { parts_.runner.RunScript(text); }

 private:
  TDialectParts parts_;
  TDBSync sync_;
  TScriptGenerator generator_;
};

}  // namespace velmora
