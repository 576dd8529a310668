// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/widgets/DifferenceLines.h"

#include <QApplication>
#include <QPainter>
#include <algorithm>

#include "shell/widgets/DifferenceModel.h"
#include "shell/widgets/Icons.h"

namespace velmora {

namespace {

constexpr int kSignSize = 14;
constexpr int kGap = 6;
constexpr int kDarkGroundBelow = 128;
constexpr int kLineRoom = 4;         // above and below the letters, both together
constexpr qreal kDetailTint = 0.65;  // of the text's colour, the rest is the ground's

QColor Mixed(const QColor& text, const QColor& ground) {
  const auto mix = [](int a, int b) { return static_cast<int>(kDetailTint * a + (1 - kDetailTint) * b); };
  return {mix(text.red(), ground.red()), mix(text.green(), ground.green()), mix(text.blue(), ground.blue())};
}

// Styles draw the frame of a box darker than windows, which cannot be seen on a dark ground.
void LightenBoxes(QPalette& palette) {
  const QColor ground = palette.color(QPalette::Base);
  if (ground.lightness() < kDarkGroundBelow)
    palette.setColor(QPalette::Window, Mixed(palette.color(QPalette::Text), ground));
}

QPalette::ColorGroup GroupOf(const QStyleOptionViewItem& option) {
  if (!option.state.testFlag(QStyle::State_Enabled)) return QPalette::Disabled;
  return option.state.testFlag(QStyle::State_Active) ? QPalette::Active : QPalette::Inactive;
}

// Draws the text into the left of the room and gives the room that is left.
QRect DrawText(QPainter& painter, const QRect& room, const QString& text, const QColor& colour) {
  if (room.width() <= 0 || text.isEmpty()) return room;
  const QString shown = painter.fontMetrics().elidedText(text, Qt::ElideRight, room.width());
  painter.setPen(colour);
  painter.drawText(room, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, shown);
  return room.adjusted(painter.fontMetrics().horizontalAdvance(shown) + kGap, 0, 0, 0);
}

}  // namespace

TDifferenceLines::TDifferenceLines(QObject* parent)
    : QStyledItemDelegate(parent), sign_(Icon(QStringLiteral("unsafe"))) {}

void TDifferenceLines::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& line) const {
  QStyleOptionViewItem own = option;
  initStyleOption(&own, line);
  const QStyle& style = own.widget != nullptr ? *own.widget->style() : *QApplication::style();
  QRect room = style.subElementRect(QStyle::SE_ItemViewItemText, &own, own.widget);
  const QString text = std::exchange(own.text, QString());
  painter->save();
  LightenBoxes(own.palette);
  style.drawControl(QStyle::CE_ItemViewItem, &own, painter, own.widget);
  room.setRight(option.rect.right() - kGap);
  if (!line.data(TDifferenceModel::kUnsafeRole).toString().isEmpty()) {
    const QRect sign(room.right() - kSignSize, room.center().y() - kSignSize / 2, kSignSize, kSignSize);
    sign_.paint(painter, sign);
    room.setRight(sign.left() - kGap);
  }
  const bool selected = own.state.testFlag(QStyle::State_Selected);
  const QPalette::ColorGroup group = GroupOf(own);
  const QColor colour = own.palette.color(group, selected ? QPalette::HighlightedText : QPalette::Text);
  const QColor ground = own.palette.color(group, selected ? QPalette::Highlight : QPalette::Base);
  painter->setFont(own.font);
  room = DrawText(*painter, room, text, colour);
  DrawText(*painter, room, line.data(TDifferenceModel::kDetailRole).toString(), Mixed(colour, ground));
  painter->restore();
}

QSize TDifferenceLines::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& line) const {
  const QSize size = QStyledItemDelegate::sizeHint(option, line);
  return {size.width(), std::max(size.height(), option.fontMetrics.height() + kLineRoom)};
}

}  // namespace velmora
