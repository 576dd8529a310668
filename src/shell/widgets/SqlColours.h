// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>

class QsciLexer;
class QObject;

namespace velmora {

// What an SQL editor is painted with.
struct TSqlColours {
  QColor text = {}, paper = {}, keyword, string, number, comment, name;
  QColor current_line = {}, margin = {}, margin_text = {}, brace, fault, fault_line;
  QColor difference_line, difference_letters, new_line, obsolete_line, gap = {}, fold = {};
};

TSqlColours SqlColours(const QPalette& palette);  // by whether its base is light or dark

QsciLexer* MakeSqlLexer(QObject* parent);  // highlights MySQL; owned by `parent`
void ColourLexer(QsciLexer& lexer, const TSqlColours& colours, const QFont& font);

}  // namespace velmora
