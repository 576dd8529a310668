// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/widgets/SqlColours.h"

#include <Qsci/qscilexersql.h>

namespace velmora {

namespace {

constexpr int kDarkBelow = 128;  // lightness of a base that is called dark

// The words of the server's grammar that scripts and creation texts are made of.
constexpr char kKeywords[] =
    "add after all alter always analyze and as asc auto_increment autoextend_size avg_row_length before begin between "
    "bigint binary bit blob bool boolean both btree by call cascade case change char character charset check checksum "
    "collate column columns comment commit compact compressed constraint convert create cross current_date "
    "current_time current_timestamp current_user data database databases date datetime day dec decimal declare default "
    "definer delay_key_write delayed delete desc describe directory distinct div double drop dynamic each else end "
    "engine enum escape exists explain false fields first fixed float for force foreign foreign_key_checks from full "
    "fulltext function geometry generated grant group hash having hour if ignore in index infile inner innodb insert "
    "insert_method int integer interval into invisible is join json key key_block_size keys kill last leading left "
    "like limit lines linestring load local localtime lock long longblob longtext match max_rows mediumblob mediumint "
    "mediumtext memory merge min_rows minute mod modify month myisam national natural no not null numeric on optimize "
    "or order outer pack_keys page_checksum partition persistent point polygon precision primary procedure purge "
    "range read real redundant references rename replace restrict return returns revoke right rlike rollback row "
    "row_format rows schema second select separator sequence serial set show signed smallint spatial sql start "
    "starting stats_auto_recalc stats_persistent stats_sample_pages storage stored table tables tablespace temporary "
    "terminated text then time timestamp tinyblob tinyint tinytext to trailing transaction transactional trigger true "
    "truncate type union unique unlock unsigned update use using utf8 utf8mb4 uuid values varbinary varchar varying "
    "versioning view virtual visible when where with without work write xor year zerofill";

class TMySQLLexer final : public QsciLexerSQL {
 public:
  explicit TMySQLLexer(QObject* parent) : QsciLexerSQL(parent) {
    setBackslashEscapes(true);
    setQuotedIdentifiers(true);
    setHashComments(true);
    setFoldComments(false);
  }
  const char* keywords(int set) const override { return set == 1 ? kKeywords : nullptr; }
};

TSqlColours LightColours() {
  return {.keyword = QColor(0x00, 0x33, 0xB3),
          .string = QColor(0x8A, 0x1F, 0x5C),
          .number = QColor(0x0F, 0x6E, 0x6E),
          .comment = QColor(0x3F, 0x49, 0x54),
          .name = QColor(0x5B, 0x43, 0x00),
          .brace = QColor(0xCF, 0xE3, 0xFF),
          .fault = QColor(0xC6, 0x28, 0x28),
          .fault_line = QColor(0xFF, 0xDC, 0xDC),
          .difference_line = QColor(0xFF, 0xF6, 0xDC),
          .difference_letters = QColor(0xFF, 0xD9, 0x80),
          .new_line = QColor(0xDF, 0xF3, 0xE0),
          .obsolete_line = QColor(0xFB, 0xE3, 0xE1)};
}

TSqlColours DarkColours() {
  return {.keyword = QColor(0x7A, 0xB4, 0xFF),
          .string = QColor(0xE3, 0x9A, 0xC4),
          .number = QColor(0x7F, 0xD1, 0xC7),
          .comment = QColor(0xBC, 0xC6, 0xD1),
          .name = QColor(0xE5, 0xC9, 0x7B),
          .brace = QColor(0x2F, 0x4B, 0x72),
          .fault = QColor(0xFF, 0x6B, 0x6B),
          .fault_line = QColor(0x5A, 0x22, 0x22),
          .difference_line = QColor(0x3B, 0x34, 0x1E),
          .difference_letters = QColor(0x6E, 0x56, 0x16),
          .new_line = QColor(0x1F, 0x3D, 0x28),
          .obsolete_line = QColor(0x4B, 0x27, 0x2A)};
}

QColor Mixed(const QColor& a, const QColor& b, double part) {
  const auto mix = [part](int x, int y) { return static_cast<int>(x * (1 - part) + y * part); };
  return {mix(a.red(), b.red()), mix(a.green(), b.green()), mix(a.blue(), b.blue())};
}

}  // namespace

TSqlColours SqlColours(const QPalette& palette) {
  const QColor paper = palette.color(QPalette::Active, QPalette::Base);
  const QColor text = palette.color(QPalette::Active, QPalette::Text);
  TSqlColours colours = paper.lightness() < kDarkBelow ? DarkColours() : LightColours();
  colours.text = text;
  colours.paper = paper;
  colours.current_line = text;
  colours.current_line.setAlphaF(0.06F);
  colours.margin = Mixed(paper, text, 0.04);
  colours.margin_text = Mixed(paper, text, 0.55);
  colours.gap = Mixed(paper, text, 0.15);
  colours.fold = Mixed(paper, text, 0.07);
  return colours;
}

QsciLexer* MakeSqlLexer(QObject* parent) { return new TMySQLLexer(parent); }

void ColourLexer(QsciLexer& lexer, const TSqlColours& colours, const QFont& font) {
  lexer.setDefaultFont(font);
  lexer.setDefaultColor(colours.text);
  lexer.setDefaultPaper(colours.paper);
  lexer.setFont(font);
  lexer.setColor(colours.text);
  lexer.setPaper(colours.paper);
  QFont bold = font;
  bold.setBold(true);
  lexer.setColor(colours.keyword, QsciLexerSQL::Keyword);
  lexer.setFont(bold, QsciLexerSQL::Keyword);
  lexer.setColor(colours.number, QsciLexerSQL::Number);
  lexer.setColor(colours.name, QsciLexerSQL::QuotedIdentifier);
  for (const int style : {QsciLexerSQL::SingleQuotedString, QsciLexerSQL::DoubleQuotedString})
    lexer.setColor(colours.string, style);
  for (const int style : {QsciLexerSQL::Comment, QsciLexerSQL::CommentLine, QsciLexerSQL::CommentLineHash})
    lexer.setColor(colours.comment, style);
}

}  // namespace velmora
