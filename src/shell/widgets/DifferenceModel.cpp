// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/widgets/DifferenceModel.h"

#include <algorithm>
#include <cstdint>

#include "exact/compare/Renames.h"
#include "shell/widgets/Icons.h"
#include "shell/widgets/QtText.h"
#include "shell/widgets/Text.h"
#include "shell/widgets/TopLevel.h"
#include "sync/SyncActions.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {

namespace {

// A member's line has the number of its group, from 1, spread over 32 bits: a view keeps open lines in a hash table, by
// little more than the sum of this and the row, and numbers that follow each other would make one long run there.
constexpr quintptr kTop = 0;
constexpr std::uint32_t kSpread = 0x9E3779B1, kBack = 0x0E8B2F51;
static_assert(static_cast<std::uint32_t>(kSpread * kBack) == 1);

quintptr IdInGroup(int group) { return std::uint32_t{(static_cast<std::uint32_t>(group) + 1) * kSpread}; }
int GroupOfId(quintptr id) { return static_cast<int>(static_cast<std::uint32_t>(id) * kBack - 1); }
constexpr qsizetype kHintLetters = 1200;

TActionIcon IconOf(const TDifference& difference) {
  const bool table = difference.kind == EDifferenceKind::Table;
  switch (difference.state) {
    case EDifferenceState::New:
      return table ? kIconNewTable : kIconNew;
    case EDifferenceState::Obsolete:
      return table ? kIconObsoleteTable : kIconObsolete;
    default:
      return kIconChanged;
  }
}

// What its group does not say; whether it is new, changed or obsolete says the icon.
QString NameBeside(const TDifference& difference, EGrouping grouping) {
  QString table = ToQt(difference.table);
  const bool named = difference.kind != EDifferenceKind::Options && difference.kind != EDifferenceKind::Partitioning;
  if (difference.kind == EDifferenceKind::Table) return table;
  if (grouping == EGrouping::ByKind) return named ? table + QLatin1Char('.') + ToQt(difference.item) : table;
  const QString kind = ToQt(KindWord(difference.kind));
  return named ? kind + QLatin1Char(' ') + ToQt(difference.item) : kind;
}

// What goes and what comes may be the same under two names.
QString MayBe(const TDifference& difference) {
  if (difference.rename.empty()) return {};
  const TRename rename = ReadRename(difference.rename);
  return difference.state == EDifferenceState::New ? TText::tr("(was %1?)").arg(ToQt(rename.from))
                                                   : TText::tr("(now %1?)").arg(ToQt(rename.to));
}

QString OfTrigger(const TDifference& difference) {
  if (difference.trigger_table.empty()) return {};
  return TText::tr("on %1", "of a trigger").arg(ToQt(difference.trigger_table));
}

// Of what stands beside tables the group says no more than the kind.
QString FullName(const TDifference& difference) {
  const QString text = ToQt(difference.text);
  const bool whole = difference.kind == EDifferenceKind::Table || !OfTable(difference.kind);
  return whole ? text : ToQt(difference.table) + QStringLiteral(": ") + text;
}

}  // namespace

TDifferenceModel::TDifferenceModel(QObject* parent)
    : QAbstractItemModel(parent), icons_{Icon(QStringLiteral("diff-new")),
                                         Icon(QStringLiteral("diff-changed")),
                                         Icon(QStringLiteral("diff-obsolete")),
                                         Icon(QStringLiteral("diff-table")),
                                         Icon(QStringLiteral("diff-table-new")),
                                         Icon(QStringLiteral("diff-table-obsolete"))} {}

void TDifferenceModel::Show(const TDifferenceList* list) {
  beginResetModel();
  list_ = list;
  groups_ = list == nullptr ? std::vector<TDifferenceGroup>() : list->Groups();
  endResetModel();
}

void TDifferenceModel::TicksChanged() {
  const int rows = rowCount({});
  if (rows == 0) return;
  emit dataChanged(index(0, 0, {}), index(rows - 1, 0, {}), {Qt::CheckStateRole});
  for (int row = 0; row < rows; ++row) {
    const QModelIndex top = index(row, 0, {});
    if (const int members = rowCount(top); members > 0)
      emit dataChanged(index(0, 0, top), index(members - 1, 0, top), {Qt::CheckStateRole});
  }
}

// --- Lines and what they stand for

const TDifferenceGroup& TDifferenceModel::Group(const QModelIndex& line) const {
  const auto place = line.internalId() == kTop ? static_cast<std::size_t>(line.row())
                                               : static_cast<std::size_t>(GroupOfId(line.internalId()));
  return groups_.at(place);
}

const TDifferenceGroup* TDifferenceModel::GroupOf(const QModelIndex& line) const {
  if (!line.isValid() || line.internalId() != kTop || Group(line).alone) return nullptr;
  return &Group(line);
}

std::optional<std::size_t> TDifferenceModel::PlaceOf(const QModelIndex& line) const {
  if (!line.isValid() || GroupOf(line) != nullptr) return std::nullopt;
  return Group(line).members.at(line.internalId() == kTop ? 0 : static_cast<std::size_t>(line.row()));
}

std::vector<std::size_t> TDifferenceModel::PlacesOf(const QModelIndex& line) const {
  if (!line.isValid()) return {};
  if (const TDifferenceGroup* group = GroupOf(line); group != nullptr) return group->members;
  return {*PlaceOf(line)};
}

QModelIndex TDifferenceModel::LineOf(std::size_t place) const {
  for (std::size_t i = 0; i < groups_.size(); ++i) {
    const auto member = std::ranges::find(groups_[i].members, place);
    if (member == groups_[i].members.end()) continue;
    const QModelIndex top = index(static_cast<int>(i), 0, {});
    return groups_[i].alone ? top : index(static_cast<int>(member - groups_[i].members.begin()), 0, top);
  }
  return {};
}

QModelIndex TDifferenceModel::index(int row, int column, const QModelIndex& parent) const {
  if (column != 0 || row < 0 || row >= rowCount(parent)) return {};
  return createIndex(row, column, parent.isValid() ? IdInGroup(parent.row()) : kTop);
}

QModelIndex TDifferenceModel::parent(const QModelIndex& line) const {
  if (!line.isValid() || line.internalId() == kTop) return {};
  return createIndex(GroupOfId(line.internalId()), 0, kTop);
}

int TDifferenceModel::rowCount(const QModelIndex& parent) const {
  if (!parent.isValid()) return static_cast<int>(groups_.size());
  const TDifferenceGroup* group = GroupOf(parent);
  return group == nullptr ? 0 : static_cast<int>(group->members.size());
}

// --- What a line shows

QVariant TDifferenceModel::data(const QModelIndex& line, int role) const {
  if (!line.isValid() || list_ == nullptr) return {};
  switch (role) {
    case Qt::DisplayRole:
      return Text(line);
    case Qt::DecorationRole:
      return Picture(line);
    case Qt::CheckStateRole:
      return Check(line);
    case Qt::ToolTipRole:
      return Hint(line);
    case Qt::AccessibleTextRole:
      return Spoken(line);
    case kDetailRole:
      return Detail(line);
    case kUnsafeRole:
      return Unsafe(line);
    default:
      return {};
  }
}

QString TDifferenceModel::Text(const QModelIndex& line) const {
  if (GroupOf(line) != nullptr) return ToQt(Group(line).title);
  return NameBeside(list_->At(*PlaceOf(line)), list_->Grouping());
}

QString TDifferenceModel::Detail(const QModelIndex& line) const {
  const auto place = PlaceOf(line);
  if (!place) return {};
  const TDifference& difference = list_->At(*place);
  QStringList parts = {MayBe(difference), OfTrigger(difference), ToQt(difference.detail)};
  if (!difference.lock.empty()) parts << QStringLiteral("[%1]").arg(ToQt(difference.lock));
  parts.removeAll(QString());
  return parts.join(QLatin1String("  "));
}

// Of a group, how many of it are unsafe: a group that is folded must not hide it.
QString TDifferenceModel::Unsafe(const QModelIndex& line) const {
  if (const auto place = PlaceOf(line)) return ToQt(list_->At(*place).unsafe);
  const auto count = std::ranges::count_if(Group(line).members,
                                           [this](std::size_t place) { return !list_->At(place).unsafe.empty(); });
  return count == 0 ? QString() : TText::Counted("%n unsafe action(s)", nullptr, static_cast<std::size_t>(count));
}

QString TDifferenceModel::Hint(const QModelIndex& line) const {
  const auto place = PlaceOf(line);
  if (!place) return Unsafe(line).toHtmlEscaped();
  const TDifference& difference = list_->At(*place);
  QString hint = FullName(difference);
  if (!difference.detail.empty() && OfTable(difference.kind)) hint += QLatin1Char('\n') + ToQt(difference.detail);
  if (!difference.note.empty()) hint += QLatin1Char('\n') + Shortened(ToQt(difference.note), kHintLetters);
  if (!difference.lock.empty()) hint += QLatin1Char('\n') + TText::tr("Meanwhile: %1").arg(ToQt(difference.lock));
  const QString texts = Shortened(ToQt(ShownLines(list_->Row(*place).description)), kHintLetters);
  const QString shown = hint + QStringLiteral("\n\n") + texts;
  return QStringLiteral("<p style='white-space:pre-wrap'>%1</p>").arg(shown.toHtmlEscaped());
}

QString TDifferenceModel::Spoken(const QModelIndex& line) const {
  const auto place = PlaceOf(line);
  QString text = place ? FullName(list_->At(*place)) : Text(line);
  if (const QString detail = Detail(line); !detail.isEmpty()) text += QStringLiteral(", ") + detail;
  const QString unsafe = Unsafe(line);
  if (unsafe.isEmpty()) return text;
  return text + QStringLiteral(", ") + (place ? TText::tr("unsafe: %1").arg(unsafe) : unsafe);
}

QIcon TDifferenceModel::Picture(const QModelIndex& line) const {
  if (const auto place = PlaceOf(line)) return icons_.at(static_cast<std::size_t>(IconOf(list_->At(*place))));
  const bool table = list_->Grouping() == EGrouping::ByTable && OfTable(list_->At(Group(line).members.front()).kind);
  return table ? icons_.at(kIconTableWithChanges) : QIcon();
}

// --- Ticks

Qt::CheckState TDifferenceModel::Check(const QModelIndex& line) const {
  const std::vector<std::size_t> places = PlacesOf(line);
  const auto ticked = std::ranges::count_if(places, [this](std::size_t place) { return list_->Ticked(place); });
  if (ticked == 0) return Qt::Unchecked;
  return static_cast<std::size_t>(ticked) == places.size() ? Qt::Checked : Qt::PartiallyChecked;
}

// A group that is ticked in part is ticked whole.
bool TDifferenceModel::setData(const QModelIndex& line, const QVariant& /*value*/, int role) {
  if (role != Qt::CheckStateRole || !line.isValid() || !OnTick) return false;
  OnTick(PlacesOf(line), Check(line) != Qt::Checked);
  return true;
}

Qt::ItemFlags TDifferenceModel::flags(const QModelIndex& line) const {
  return line.isValid() ? Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable : Qt::NoItemFlags;
}

}  // namespace velmora
