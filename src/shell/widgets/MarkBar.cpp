// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/widgets/MarkBar.h"

#include <QStyle>
#include <cstddef>

namespace velmora {

namespace {

// Each pair of them can be read: the contrast is 4.5 or more.
struct TMarkRow {
  QRgb back, text;
};
constexpr TMarkRow kMarks[] = {{0, 0},
                               {0xffb3261e, 0xffffffff},
                               {0xffa84300, 0xffffffff},
                               {0xfff2c200, 0xff000000},
                               {0xff1b7f3b, 0xffffffff},
                               {0xff1d5fbf, 0xffffffff},
                               {0xff6f3fb0, 0xffffffff}};
static_assert(std::size(kMarks) == std::size(kTaskColours));

}  // namespace

TMarkColours ColoursOf(ETaskColour colour) {
  if (colour == ETaskColour::None) return {};
  const TMarkRow& row = kMarks[static_cast<std::size_t>(colour)];
  return {QColor::fromRgb(row.back), QColor::fromRgb(row.text)};
}

TMarkBar::TMarkBar(QWidget* parent) : QLabel(parent) {
  setTextFormat(Qt::PlainText);
  setAlignment(Qt::AlignCenter);
  setAutoFillBackground(true);
  setMargin(style()->pixelMetric(QStyle::PM_LayoutTopMargin) / 3);
  setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
  hide();
}

void TMarkBar::Mark(ETaskColour colour, const QString& text) {
  const TMarkColours colours = ColoursOf(colour);
  setVisible(colours.back.isValid());
  if (!colours.back.isValid()) return;
  QPalette marked = palette();
  marked.setColor(QPalette::Window, colours.back);
  marked.setColor(QPalette::WindowText, colours.text);
  setPalette(marked);
  setText(text);
  setToolTip(text.toHtmlEscaped());
}

}  // namespace velmora
