// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/widgets/MappingModel.h"

#include <algorithm>

#include "shell/widgets/QtText.h"
#include "shell/widgets/Text.h"

namespace velmora {

namespace {

enum ESection { kTable, kColumn, kSource, kType, kLevel, kText, kSections };
constexpr TText kHeadings[kSections] = {TText::Later("Table"),    TText::Later("Column"), TText::Later("In the source"),
                                        TText::Later("In MySQL"), TText::Later("Level"),  TText::Later("What to know")};
constexpr TText kLevels[] = {TText::Later("info"), TText::Later("warning"), TText::Later("refused")};  // by EMadeLevel

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
  const QString text = Cell(At(index.row()), index.column());
  return role == Qt::DisplayRole ? text : text.toHtmlEscaped();
}

QString TMappingModel::Cell(const TMadeColumn& column, int section) const {
  switch (section) {
    case kTable:
      return ToQt(column.table);
    case kColumn:
      return ToQt(column.column);
    case kSource:
      return ToQt(column.source);
    case kType: {
      const std::string type = draft_.TypeOf(column);
      return type.empty() && !column.rule.empty() ? TText::tr("(after the next analysis)") : ToQt(type);
    }
    case kLevel:
      return kLevels[static_cast<std::size_t>(column.level)];
    default:
      return ToQt(draft_.TextOf(column));
  }
}

QVariant TMappingModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section >= kSections) return {};
  return QString(kHeadings[section]);
}

}  // namespace velmora
