// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/compare/PrintedTable.h"

#include <algorithm>

#include "exact/compare/ServerForm.h"
#include "exact/compare/Translation.h"
#include "mysqltext/ColumnParts.h"
#include "mysqltext/KeyText.h"
#include "mysqltext/Lexer.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kZeroByte[] = "line %d: the server prints a default that nobody can read, with zero bytes";
constexpr char kUndoubled[] = "the server prints a foreign key whose names nobody can read: %s";
constexpr char kNotItsColumn[] = "column %s of foreign key %s is none of the table";
constexpr char kOtherCount[] = "foreign key %s has other columns than it refers to";

void CheckForeignKey(const TTableText& table, const TElement& key) {
  const TForeignKeyParts& parts = key.text.ForeignKey();
  for (const std::string& column : parts.columns)
    if (table.Find(EElement::Column, column) == nullptr) RaiseError(Format(kNotItsColumn, column, key.name));
  const TTokens tokens = key.text.Tokens();
  const auto listed = [&tokens](std::size_t open) { return AfterGroup(tokens, open) - open - 1; };
  const std::size_t own = NextBracket(tokens, key.text.Body());
  const std::size_t count = 2 * parts.columns.size();  // with their commas and the closing bracket
  if (listed(own) != count || listed(NextBracket(tokens, AfterGroup(tokens, own))) != count)
    RaiseError(Format(kOtherCount, key.name));
}

bool IsSorted(EElement kind) {
  return kind == EElement::PrimaryKey || kind == EElement::UniqueKey || kind == EElement::Key;
}

// Most tables have no shapes, which is seen without reading their columns.
bool MayHaveShapes(std::string_view text) {
  return text.find("point") != std::string_view::npos || text.find("line") != std::string_view::npos ||
         text.find("polygon") != std::string_view::npos || text.find("geom") != std::string_view::npos;
}

// A whole shape is in no key but a spatial one.
void AddPrefixes(const TTableText& table, TElement& key) {
  constexpr char kPrefix[] = "(4)";
  const TTokens tokens = key.text.Tokens();
  std::string text = key.text.Str();
  std::vector<TTokenRange> parts = ListParts(tokens, NextBracket(tokens, 0));
  std::reverse(parts.begin(), parts.end());  // so that places in front stay
  for (const TTokenRange& part : parts) {
    const TToken& name = tokens[part.first];
    const TElement* column = IsName(name) ? table.Find(EElement::Column, NameOf(name)) : nullptr;
    const bool prefixed = TokenAt(tokens, part.first + 1).Is("(");
    if (column != nullptr && !prefixed && IsShapeType(column->text.Column().type)) text.insert(name.End(), kPrefix);
  }
  if (text != key.text.Str()) key.text = std::move(text);
}

}  // namespace

TTableText ReadPrintedTable(const std::string& text, bool marks) {
  const std::size_t zero = text.find('\0');
  if (zero != std::string::npos) RaiseError(Format(kZeroByte, LineOf(text, zero)));
  const bool doubled = text.find("``") != std::string::npos && text.find(" FOREIGN KEY (") != std::string::npos;
  try {
    const std::string unmarked = marks ? "" : WithoutMarks(text);
    const std::string& read = marks ? text : unmarked;
    TTableText table = ReadTableWithoutRawLineEnds(read, Tokens(read));
    for (const TElement& element : table.elements)
      if (doubled && element.kind == EElement::ForeignKey) CheckForeignKey(table, element);
    if (MayHaveShapes(read))
      for (TElement& element : table.elements)
        if (IsSorted(element.kind)) AddPrefixes(table, element);
    return table;
  } catch (const EVelmora& error) {
    if (!doubled) throw;
    RaiseError(Format(kUndoubled, error.what()));
  }
}

}  // namespace velmora
