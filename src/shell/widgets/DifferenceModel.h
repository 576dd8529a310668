// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractItemModel>
#include <QIcon>
#include <array>
#include <functional>
#include <optional>
#include <vector>

#include "app/DifferenceList.h"

namespace velmora {

// The groups of a list of differences with their members, as a tree of one column. A group that is alone is the line of
// its only member.
class TDifferenceModel final : public QAbstractItemModel {
 public:
  enum ERole { kDetailRole = Qt::UserRole, kUnsafeRole };  // what changes; why that is unsafe, empty for safe lines

  explicit TDifferenceModel(QObject* parent = nullptr);

  // Somebody ticks or unticks a line: the places that stand behind it.
  std::function<void(const std::vector<std::size_t>& places, bool on)> OnTick;

  void Show(const TDifferenceList* list);  // as it is arranged now; not owned, null for none
  void TicksChanged();                     // of any lines

  std::vector<std::size_t> PlacesOf(const QModelIndex& line) const;   // of a group all that are shown
  std::optional<std::size_t> PlaceOf(const QModelIndex& line) const;  // nothing for a group
  const TDifferenceGroup* GroupOf(const QModelIndex& line) const;     // nothing for a member
  QModelIndex LineOf(std::size_t place) const;                        // invalid for one that is not shown

  QModelIndex index(int row, int column, const QModelIndex& parent) const override;
  QModelIndex parent(const QModelIndex& line) const override;
  int rowCount(const QModelIndex& parent) const override;
  int columnCount(const QModelIndex& /*parent*/) const override { return 1; }
  QVariant data(const QModelIndex& line, int role) const override;
  bool setData(const QModelIndex& line, const QVariant& value, int role) override;
  Qt::ItemFlags flags(const QModelIndex& line) const override;

 private:
  const TDifferenceGroup& Group(const QModelIndex& line) const;  // that a line is, or is a member of
  Qt::CheckState Check(const QModelIndex& line) const;
  QString Text(const QModelIndex& line) const;
  QString Detail(const QModelIndex& line) const;
  QString Unsafe(const QModelIndex& line) const;
  QString Hint(const QModelIndex& line) const;
  QString Spoken(const QModelIndex& line) const;
  QIcon Picture(const QModelIndex& line) const;

  const TDifferenceList* list_ = nullptr;
  std::vector<TDifferenceGroup> groups_;  // as they were when it was shown
  std::array<QIcon, 6> icons_;            // by TActionIcon
};

}  // namespace velmora
