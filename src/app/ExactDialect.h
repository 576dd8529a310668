// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/Dialect.h"
#include "exact/run/ExactSync.h"

namespace velmora {

// Creation texts without loss, for the servers of today: TExactSync behind the port of dialects.
class TExactDialect final : public TDialect {
 public:
  explicit TExactDialect(const TDialectParts& parts);

  TExactSync sync;

  void Take(const TComparisonWishes& wishes) override;
  std::unique_ptr<TDBConn> Compare() override;  // the target stays what it is
  void Forget() override { sync.Forget(); }
  bool TablesIdentical() const override { return sync.TablesIdentical(); }
  bool Identical() const override { return sync.Identical(); }
  const TStringList& ActionLog() const override { return sync.ActionLog; }
  TFindings Findings() const override;
  std::vector<TDifference> Differences() const override;
  std::vector<TRemark> Remarks(TDBConn* compared) const override;
  bool ReferenceIsEmpty() const override { return sync.ReferenceIsEmpty(); }
  std::string Refusal() const override;
  const std::string& TableUnderWay() const override { return sync.TableUnderWay(); }
  bool TargetLost() const override { return sync.TargetLost(); }
  bool Reads(const std::string& table) override;
  // As the servers print them.
  void TableTexts(const std::string& table, std::string& reference, std::string& target) override;
  void ObjectTexts(int action, std::string& reference, std::string& target) override;
  TAlignedRows Aligned(const std::string& reference, const std::string& target) const override;
  std::map<int, std::string> UnsafeActions() const override;
  TStringList UnsafeStatements(const std::string& script) override;
  std::map<int, TActionLock> ActionLocks() const override { return sync.ActionLocks(sync.Plan()); }
  TStringList AboveAlgorithm(const std::string& script) const override;
  std::vector<TPlannedStatement> Planned(const std::string& script) const override;
  std::vector<TRowFinding> CheckRows(int seconds) override { return sync.CheckRows(seconds); }
  int VerifyOnServer(const TScratchPorts& ports) override { return sync.VerifyOnServer(ports); }
  void GenerateScript() override { sync.GenerateScript(parts_.editor, parts_.clock, parts_.use.note); }
  std::string UndoScript() const override;
  TScriptPieces Statements(const std::string& script) const override { return SplitExactScript(script); }
  // Statements of the last comparison's plan run only on what that has compared: what has moved since ends the first
  // run of it before any statement. After a failure no table is locked, and the session's settings are as they were.
  void RunScript(const std::string& text, const TRunCare& care) override;

 private:
  std::optional<std::string> TargetStructure(const std::string& table);
  void CheckUnmoved(std::vector<TPlanStatement> planned) const;

  TDialectParts parts_;
  TForeignWishes foreign_;
  bool has_run_ = false;  // since the last comparison
};

}  // namespace velmora
