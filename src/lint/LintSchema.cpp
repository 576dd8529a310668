// SPDX-License-Identifier: GPL-3.0-or-later
#include "lint/LintSchema.h"

#include "exact/compare/CanonicalForm.h"
#include "mysqltext/Charsets.h"
#include "util/Text.h"

namespace velmora {

namespace {

using TCounts = std::map<std::string, std::size_t>;

TUsualName UsualOf(const TCounts& counts) {
  TUsualName usual;
  for (const auto& [name, tables] : counts) usual.of += tables;
  for (const auto& [name, tables] : counts)
    if (tables * 2 > usual.of) {
      usual.name = name;
      usual.tables = tables;
    }
  return usual;
}

}  // namespace

void TLintSchema::Settle() {
  TCounts charsets, collations;
  for (std::size_t i = 0; i < tables_.size(); ++i) {
    index_.emplace(LowerText(tables_[i].name), i);
    if (const TCharset of = TableCharset(tables_[i]); !of.charset.empty()) ++charsets[of.charset];
  }
  usual_charset_ = UsualOf(charsets);
  for (const TTableText& table : tables_)
    if (const TCharset of = TableCharset(table); of.charset == usual_charset_.name && !of.collation.empty())
      ++collations[of.collation];
  usual_collation_ = UsualOf(collations);
}

const TTableText* TLintSchema::Find(std::string_view name) const {
  const auto found = index_.find(LowerText(name));
  return found == index_.end() ? nullptr : &tables_[found->second];
}

std::string LintEngine(const TTableText& table) {
  const std::string engine = EngineOf(table);
  return engine.empty() ? "innodb" : engine;
}

}  // namespace velmora
