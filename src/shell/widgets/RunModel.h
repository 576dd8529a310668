// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractTableModel>
#include <QPalette>
#include <string>
#include <vector>

#include "app/ScriptRunner.h"

namespace velmora {

enum ERunColumn {
  kRunNumber,
  kRunState,
  kRunStatement,
  kRunTime,
  kRunRows,
  kRunLine,
  kRunForce,
  kRunWords,
  kRunColumns  // how many there are
};

// The statements of a run as rows.
class TRunModel final : public QAbstractTableModel {
 public:
  using QAbstractTableModel::QAbstractTableModel;

  // What is new of a run of `script`; the first report of a run, after Clear, is taken whole.
  void Take(const TRunReport& report, const std::string& script);
  void Clear();
  const std::vector<TScriptStatement>& Statements() const { return statements_; }
  const std::vector<TStatementRun>& Runs() const { return runs_; }
  void SetPalette(const QPalette& palette) { palette_ = palette; }

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  void Begin(const TRunReport& report, const std::string& script);
  QString Cell(std::size_t row, int column) const;
  QVariant Colour(ERunState state) const;

  std::vector<TScriptStatement> statements_;
  std::vector<TStatementRun> runs_;
  std::size_t reached_ = 0;         // statements that had run when it was told last
  std::vector<std::size_t> lines_;  // of the statements
  std::vector<std::string> force_;  // once the run has ended
  QPalette palette_;
};

}  // namespace velmora
