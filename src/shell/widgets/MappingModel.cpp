// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/widgets/MappingModel.h"

#include <algorithm>

#include "shell/widgets/QtText.h"

namespace velmora {

namespace {

enum ESection { kTable, kColumn, kSource, kType, kLevel, kText, kSections };
constexpr const char* kHeadings[kSections] = {"Table", "Column", "In the source", "In MySQL", "Level", "What to know"};
constexpr const char* kLevels[] = {"info", "warning", "refused"};  // by EMadeLevel
constexpr char kAfterAnalysis[] = "(after the next analysis)";

}  // namespace

TMappingModel::TMappingModel(const TMappingDraft& draft, QObject* parent) : QAbstractTableModel(parent), draft_(draft) {
  Show(EMappingShown::All, {});
}

void TMappingModel::Show(EMappingShown shown, const std::string& filter) {
  beginResetModel();
  rows_ = draft_.Shown(shown, filter);
  endResetModel();
}

QModelIndex TMappingModel::LineOf(const TMadeColumn& column) const {
  const auto row = std::ranges::find_if(rows_, [&](std::size_t place) { return &draft_.Columns()[place] == &column; });
  return row == rows_.end() ? QModelIndex() : index(static_cast<int>(row - rows_.begin()), 0);
}

const TMadeColumn& TMappingModel::At(int row) const {
  return draft_.Columns().at(rows_.at(static_cast<std::size_t>(row)));
}

int TMappingModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int TMappingModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : kSections; }

QVariant TMappingModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::ToolTipRole)) return {};
  const QString text = ToQt(Cell(At(index.row()), index.column()));
  return role == Qt::DisplayRole ? text : text.toHtmlEscaped();
}

std::string TMappingModel::Cell(const TMadeColumn& column, int section) const {
  switch (section) {
    case kTable:
      return column.table;
    case kColumn:
      return column.column;
    case kSource:
      return column.source;
    case kType: {
      const std::string type = draft_.TypeOf(column);
      return type.empty() && !column.rule.empty() ? kAfterAnalysis : type;
    }
    case kLevel:
      return kLevels[static_cast<std::size_t>(column.level)];
    default:
      return draft_.TextOf(column);
  }
}

QVariant TMappingModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section >= kSections) return {};
  return QLatin1String(kHeadings[section]);
}

}  // namespace velmora
