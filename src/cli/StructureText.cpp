#include "cli/StructureText.h"

#include <algorithm>
#include <ostream>

#include "util/Text.h"

namespace velmora {

namespace {

std::string TextOf(const TRenderedText& rendered) {
  return rendered.text ? *rendered.text : "(cannot be shown: " + rendered.error + ")";
}

void PrintColumns(const std::vector<TColumnView>& columns, std::ostream& out) {
  std::size_t width = 0;
  for (const TColumnView& column : columns) width = std::max(width, CharCount(column.row.name));
  for (const TColumnView& column : columns)
    out << "  " << column.row.name << std::string(width - CharCount(column.row.name) + 2, ' ')
        << TextOf(column.rendered) << '\n';
}

void PrintRules(const TConstraintRow& row, std::ostream& out) {
  if (!row.delete_rule.empty()) out << " on delete " << row.delete_rule;
  if (!row.update_rule.empty()) out << " on update " << row.update_rule;
}

void PrintTable(const TTableView& table, std::ostream& out) {
  out << table.name;
  if (!table.type.empty()) out << " (" << table.type << ')';
  out << '\n';
  if (table.error) {
    out << "  cannot be read: " << *table.error << '\n';
    return;
  }
  PrintColumns(table.columns, out);
  for (const TKeyView& key : table.keys) out << "  " << TextOf(key.rendered) << '\n';
  for (const TConstraintView& constraint : table.constraints) {
    out << "  " << TextOf(constraint.rendered);
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
