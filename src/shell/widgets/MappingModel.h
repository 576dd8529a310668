// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractTableModel>
#include <string>
#include <vector>

#include "app/MappingDraft.h"

namespace velmora {

// What became of the columns of a source, as rows: table, column, type there, type in MySQL, level, what to know.
class TMappingModel final : public QAbstractTableModel {
 public:
  TMappingModel(const TMappingDraft& draft, QObject* parent);  // the draft outlives this object

  void Show(EMappingShown shown, const std::string& filter);
  const TMadeColumn& At(int row) const;                 // of the rows that are shown
  QModelIndex LineOf(const TMadeColumn& column) const;  // invalid for one that is not shown

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  QString Cell(const TMadeColumn& column, int section) const;

  const TMappingDraft& draft_;
  std::vector<std::size_t> rows_;
};

}  // namespace velmora
