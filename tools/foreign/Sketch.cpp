// SPDX-License-Identifier: GPL-3.0-or-later
#include "foreign/Sketch.h"

#include <algorithm>
#include <cstring>
#include <set>

#include "util/Format.h"
#include "util/Text.h"

namespace velmora::testing {

namespace {

// Names that somebody, somewhere, has given.
const std::vector<std::string> kNames = {
    "id",      "order", "select", "Group",    "key",        "PRIMARY",   "index",      "Unit Price", "Größe",
    "straße",  "NAME",  "name_2", "a/b",      "a.b",        "100%",      "it's",       "what?",      "a`b",
    "1st",     "$",     "x#",     "(sum)",    "-- no",      "a;b",       "Ångström",   "Angstrom",   "Łódź",
    "Дата",    "数量",  "GRÖßE",  "ДАТА",     " lead",      "trail ",    "tab\there",  "a\\b",       "value",
    "rank",    "user",  "date",   "İstanbul", "null",       "my_row_id", "FTS_DOC_ID", "DB_ROW_ID",  "e\u0301",
    "😀 emoji", "a\"b",  "[x]",    "a,b",      "#mysql50#x", "%s",        "lost+found", "ﬁn",         "kind",
    "a*b",     "1",     "_"};

class TDrawer {
 public:
  TDrawer(const TSketchDialect& dialect, TRandom& random) : dialect_(dialect), random_(random) {}

  TSketch Draw() {
    const std::size_t tables = 1 + random_.Below(4);
    std::set<std::string> names;
    for (std::size_t i = 0; i < tables; ++i) {
      sketch_.push_back({.name = Name(dialect_.names.table, names)});
      DrawTable(sketch_.back());
      if (!dialect_.columns_alone && random_.Chance(67)) Refer(i);
    }
    return std::move(sketch_);
  }

 private:
  int Between(int first, int last) {
    return first + static_cast<int>(random_.Below(static_cast<std::size_t>(last - first + 1)));
  }

  // --- Names

  bool Takes(const std::string& letter) const {
    if (dialect_.letters != nullptr) return std::strstr(dialect_.letters, letter.c_str()) != nullptr;
    return std::strstr(dialect_.refused, letter.c_str()) == nullptr;
  }

  std::string Wish(std::size_t bytes) {
    if (random_.Chance(12)) return kNames[random_.Below(kNames.size())] + std::string(random_.Below(bytes + 1), 'x');
    if (random_.Chance(8)) {
      std::string wide;
      for (std::size_t i = random_.Below(bytes / 2 + 1); i > 0; --i) wide += random_.Chance(50) ? "ö" : "数";
      return wide;
    }
    return random_.Pick(kNames);
  }

  std::string Name(std::size_t bytes, std::set<std::string>& taken) {
    for (int tries = 0;; ++tries) {
      const std::string wish = tries < 40 ? Wish(bytes) : Format("c%d", tries);
      std::string name;
      for (std::size_t at = 0; at < wish.size();) {
        const std::string letter = wish.substr(at, CharSize(wish, at));
        at += letter.size();
        if (name.size() + letter.size() > bytes) break;
        if (Takes(letter)) name += letter;
      }
      if (random_.Chance(10)) name = LowerText(name);
      while (!dialect_.end_blanks && name.ends_with(' ')) name.pop_back();
      const bool plain_start = dialect_.letters == nullptr || name.empty() || name[0] < '0' || name[0] > '9';
      const bool refused =
          std::ranges::any_of(dialect_.refused_names, [&](const char* each) { return SameText(each, name); });
      if (refused) continue;
      const std::string known = dialect_.case_counts ? Trim(name) : LowerText(Trim(name));
      if (!Trim(name).empty() && name.size() <= bytes && plain_start && taken.insert(known).second) return name;
    }
  }

  // --- Tables

  void DrawTable(TSketchTable& table) {
    const std::size_t columns = 1 + random_.Below(static_cast<std::size_t>(dialect_.most_columns));
    for (std::size_t i = 0; i < columns; ++i) AddColumn(table, random_.Pick(dialect_.types));
    if (HasComments() && random_.Chance(33)) table.comment = "What's \"in\" it \\ Größe";
    if (dialect_.columns_alone) return;
    if (random_.Chance(80)) AddKey(table, ESketchKey::Primary);
    for (std::size_t i = random_.Below(4); i > 0; --i)
      AddKey(table, random_.Chance(50) ? ESketchKey::Plain : ESketchKey::Unique);
    SetCounting(table);
  }

  TSketchColumn& AddColumn(TSketchTable& table, const TSketchType& type) {
    std::set<std::string> names;
    for (const TSketchColumn& column : table.columns)
      names.insert(dialect_.case_counts ? Trim(column.name) : LowerText(Trim(column.name)));
    TSketchColumn column{.name = Name(dialect_.names.column, names), .type = &type};
    if (type.last > 0) column.size = random_.Chance(25) ? type.last : Between(type.first, type.last);
    if (type.most_scale > 0) column.scale = Between(0, std::min(type.most_scale, column.size));
    column.not_null = !dialect_.columns_alone && random_.Chance(33);
    if (!dialect_.columns_alone && !type.defaults.empty() && random_.Chance(50)) {
      const std::string value = random_.Pick(type.defaults);
      if (HasRoomForDefaults(column)) column.default_text = value;
    }
    if (!dialect_.columns_alone && dialect_.checks && !type.checks.empty() && random_.Chance(33))
      column.check = random_.Pick(type.checks);
    if (HasComments() && random_.Chance(25)) column.comment = "it's a \\ \"comment\" ß";
    table.columns.push_back(column);
    return table.columns.back();
  }

  bool HasComments() const { return !dialect_.columns_alone && dialect_.comments; }

  // Those of sizes that are drawn are short, but one digit in front of the point is too little.
  static bool HasRoomForDefaults(const TSketchColumn& column) {
    return column.type->most != EMost::Digits || column.size - column.scale > 1;
  }

  bool MayBeKey(const TSketchColumn& column) const {
    const bool long_one = column.type->most != EMost::Literal && column.type->most != EMost::Digits;
    return column.type->keyed && (!long_one || column.size <= dialect_.key_size);
  }

  void AddKey(TSketchTable& table, ESketchKey kind) {
    std::vector<std::size_t> free;
    for (std::size_t i = 0; i < table.columns.size(); ++i)
      if (MayBeKey(table.columns[i])) free.push_back(i);
    if (free.empty()) return;
    TSketchKey key{.name = Name(dialect_.names.key, names_), .kind = kind, .columns = {}, .descending = {}};
    const std::size_t parts = random_.Chance(50) ? 1 : 1 + random_.Below(static_cast<std::size_t>(dialect_.most_parts));
    while (key.columns.size() < parts && !free.empty()) {
      const std::size_t at = random_.Below(free.size());
      key.columns.push_back(free[at]);
      key.descending.push_back(dialect_.descending && kind == ESketchKey::Plain && random_.Chance(33));
      free.erase(free.begin() + static_cast<std::ptrdiff_t>(at));
    }
    const std::set<std::size_t> own(key.columns.begin(), key.columns.end());
    for (const TSketchKey& other : table.keys)
      if (own == std::set<std::size_t>(other.columns.begin(), other.columns.end())) return;
    if (kind == ESketchKey::Primary)
      for (const std::size_t column : key.columns) table.columns[column].not_null = true;
    table.keys.push_back(key);
  }

  void SetCounting(TSketchTable& table) {
    if (table.keys.empty() || table.keys[0].kind != ESketchKey::Primary || random_.Chance(33)) return;
    TSketchColumn& column = table.columns[table.keys[0].columns[0]];
    column.counts = column.type->counts;
    column.small = column.counts;
    if (column.counts) column.default_text.reset();
  }

  // --- References

  void Refer(std::size_t child) {
    const std::size_t parent = random_.Below(child + 1);
    std::vector<TSketchKey> keys;
    for (const TSketchKey& key : sketch_[parent].keys)
      if (key.kind == ESketchKey::Primary || (key.kind == ESketchKey::Unique && !dialect_.primary_parents))
        keys.push_back(key);
    if (keys.empty()) return;
    TSketchTable& table = sketch_[child];
    const TSketchKey key = random_.Pick(keys);
    TSketchReference reference{.name = Name(dialect_.names.key, dialect_.shared_names ? names_ : reference_names_),
                               .columns = {},
                               .table = parent,
                               .references = key.columns,
                               .delete_rule = random_.Below(dialect_.delete_rules.size()),
                               .update_rule = random_.Below(dialect_.update_rules.size())};
    for (const std::size_t part : key.columns) {
      const TSketchColumn like = sketch_[parent].columns[part];
      TSketchColumn& column = AddColumn(table, *like.type);
      column.size = like.size, column.scale = like.scale, column.small = like.small;
      column.not_null = false;
      column.check.reset(), column.default_text.reset();
      reference.columns.push_back(table.columns.size() - 1);
    }
    table.references.push_back(reference);
  }

  const TSketchDialect& dialect_;
  TRandom& random_;
  TSketch sketch_;
  std::set<std::string> names_;  // of keys
  std::set<std::string> reference_names_;
};

std::string PlacesText(const std::vector<std::size_t>& places) {
  TStringList texts;
  for (const std::size_t place : places) texts.push_back(Format("%d", place + 1));
  return JoinList(texts, ",");
}

}  // namespace

std::string TSketchColumn::Word() const {
  const auto sizes = std::count(type->word, type->word + std::strlen(type->word), '%');
  if (sizes == 0) return type->word;
  return sizes == 1 ? Format(type->word, size) : Format(type->word, size, scale);
}

std::string TSketchColumn::Most() const {
  if (small) return "1";
  if (type->most == EMost::PlainLetters) return Format("repeat('x', %d)", size);
  if (type->most == EMost::Letters) return Format("repeat('ö', %d)", size);
  if (type->most == EMost::Bytes) return Format("repeat(x'ff', %d)", size);
  if (type->most == EMost::Literal) return type->literal;
  const std::string digits(static_cast<std::size_t>(size), '9');
  return "-" + digits.substr(static_cast<std::size_t>(scale)) +
         (scale == 0 ? "" : "." + digits.substr(0, static_cast<std::size_t>(scale)));
}

TSketch DrawSketch(const TSketchDialect& dialect, TRandom& random) { return TDrawer(dialect, random).Draw(); }

TStringList ShapeOf(const TSketch& sketch, const TSketchDialect& dialect) {
  TStringList shape;
  for (const TSketchTable& table : sketch) {
    std::string line;
    for (const TSketchColumn& column : table.columns) line += !dialect.columns_alone && column.not_null ? 'N' : '0';
    for (const TSketchKey& key : table.keys)
      if (key.kind == ESketchKey::Primary) line += " primary " + PlacesText(key.columns);
    std::vector<std::string> references;
    for (const TSketchReference& reference : table.references)
      for (std::size_t i = 0; i < reference.columns.size(); ++i)
        references.push_back(Format(" %d>%d", reference.columns[i] + 1, reference.references[i] + 1));
    std::ranges::sort(references);
    shape.push_back(line + JoinList(references, ""));
  }
  std::ranges::sort(shape);
  return shape;
}

}  // namespace velmora::testing
