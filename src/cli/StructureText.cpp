// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/StructureText.h"

#include <algorithm>
#include <ostream>

#include "util/Text.h"

namespace velmora {

namespace {

std::string ShownRendering(const TRenderedText& rendered) {
  return ShownText(rendered.text ? *rendered.text : "(cannot be shown: " + rendered.error + ")");
}

void PrintColumns(const std::vector<TColumnView>& columns, std::ostream& out) {
  TStringList names;
  std::size_t width = 0;
  for (const TColumnView& column : columns) {
    names.push_back(ShownText(column.row.name));
    width = std::max(width, CharCount(names.back()));
  }
  for (std::size_t i = 0; i < columns.size(); ++i)
    out << "  " << names[i] << std::string(width - CharCount(names[i]) + 2, ' ') << ShownRendering(columns[i].rendered)
        << '\n';
}

void PrintRules(const TConstraintRow& row, std::ostream& out) {
  if (!row.delete_rule.empty()) out << " on delete " << ShownText(row.delete_rule);
  if (!row.update_rule.empty()) out << " on update " << ShownText(row.update_rule);
}

void PrintTable(const TTableView& table, std::ostream& out) {
  out << ShownText(table.name);
  if (!table.type.empty()) out << " (" << ShownText(table.type) << ')';
  out << '\n';
  if (table.error) {
    out << "  cannot be read: " << ShownText(*table.error) << '\n';
    return;
  }
  PrintColumns(table.columns, out);
  for (const TKeyView& key : table.keys) out << "  " << ShownRendering(key.rendered) << '\n';
  for (const TConstraintView& constraint : table.constraints) {
    out << "  " << ShownRendering(constraint.rendered);
    PrintRules(constraint.row, out);
    out << '\n';
  }
}

}  // namespace

void PrintTables(const std::vector<TTableView>& tables, std::ostream& out) {
  for (std::size_t i = 0; i < tables.size(); ++i) {
    if (i > 0) out << '\n';
    PrintTable(tables[i], out);
  }
}

}  // namespace velmora
