// SPDX-License-Identifier: GPL-3.0-or-later

// Folders of dBASE, and of FoxPro with a database over them. What the bytes mean stands in docs/dbf.md.

#include <algorithm>

#include "foreign/Sources.h"
#include "support/ByteText.h"
#include "support/PlainBytes.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora::testing {

namespace {

using enum EMost;

// A type's code is its letter; one with a fixed size has that as its first.
constexpr char kNameLetters[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";

const TSketchDialect kDBase = {
    .types = {{.word = "", .code = 'C', .first = 1, .last = 254, .most = Letters},
              {.word = "", .code = 'N', .first = 1, .last = 20, .most_scale = 18, .most = Digits},
              {.word = "", .code = 'F', .first = 1, .last = 20, .most_scale = 18, .most = Digits},
              {.word = "", .code = 'D', .first = 8, .last = 8, .literal = "'9999-12-31'"},
              {.word = "", .code = 'L', .first = 1, .last = 1, .literal = "1"},
              {.word = "", .code = 'M', .first = 10, .last = 10, .literal = "'ö'"}},
    .columns_alone = true,
    .names = {10, 200},
    .refused = "/\t数ДатЛódźiŁ😀ﬁİ\u0301ДАТА",
    .most_columns = 40};

const TSketchDialect kFoxPro = {
    .types =
        {{.word = "",
          .code = 'C',
          .first = 6,
          .last = 254,
          .most = Letters,
          .defaults = {"\"none\"", "'it'", "[x]", "\"\""},
          .checks = {"#<>\"x .or. y\"", "# = 'a' .or. # = 'b'"},
          .keyed = true},
         {.word = "",
          .code = 'N',
          .first = 1,
          .last = 20,
          .most_scale = 18,
          .most = Digits,
          .defaults = {"0", ".NULL."},
          .checks = {"#>0", "# >= 0 and # < 5"},
          .keyed = true},
         {.word = "",
          .code = 'I',
          .first = 4,
          .last = 4,
          .literal = "-2147483648",
          .defaults = {"7"},
          .keyed = true,
          .counts = true},
         {.word = "", .code = 'B', .first = 8, .last = 8, .literal = "1.7e308", .defaults = {"1.5"}},
         {.word = "", .code = 'Y', .first = 8, .last = 8, .literal = "-922337203685477.5808", .defaults = {"$1.5"}},
         {.word = "",
          .code = 'D',
          .first = 8,
          .last = 8,
          .literal = "'9999-12-31'",
          .defaults = {"DATE()", "{^2024-02-29}"},
          .keyed = true},
         {.word = "",
          .code = 'T',
          .first = 8,
          .last = 8,
          .literal = "'9999-12-31 23:59:59'",
          .defaults = {"DATETIME()"},
          .keyed = true},
         {.word = "", .code = 'L', .first = 1, .last = 1, .literal = "1", .defaults = {".T.", ".F."}},
         {.word = "", .code = 'M', .first = 4, .last = 4, .literal = "'ö'"},
         {.word = "", .code = 'G', .first = 4, .last = 4, .literal = "x'ff'"},
         {.word = "", .code = 'W', .first = 4, .last = 4, .literal = "x'ff'"},
         {.word = "", .code = 'V', .first = 6, .last = 254, .most = Letters, .defaults = {"\"none\""}, .keyed = true},
         {.word = "", .code = 'Q', .first = 1, .last = 254, .most = Bytes}},
    .names = {128, 128, 10},
    .letters = kNameLetters,
    .most_parts = 1,
    .descending = false,
    .delete_rules = {"R", "C", "I"},
    .update_rules = {"R", "C", " "},
    .key_size = 254,
    .without_form = {"takes no check of a column"}};

// Letters of the two code pages, which have the same places up to U+00FF.
std::string Latin(const std::string& text) {
  std::string bytes;
  for (std::size_t at = 0; at < text.size(); at += CharSize(text, at)) {
    const auto lead = static_cast<unsigned char>(text[at]);
    bytes += lead < 0x80 ? text[at]
                         : static_cast<char>((lead & 3U) << 6U | (static_cast<unsigned char>(text[at + 1]) & 63U));
  }
  return bytes;
}

struct TField {
  std::string name;  // its bytes
  char type;
  int size, decimals = 0, flags = 0;
};

// A table without records; `link` stands between the fields and the records.
std::string Head(char version, const std::vector<TField>& fields, bool tags, const std::string& link) {
  std::string bytes;
  std::size_t record = 1;
  for (const TField& field : fields) {
    bytes += Padded(field.name, 11) + field.type + std::string(4, '\0') + Little(static_cast<unsigned>(field.size), 1) +
             Little(static_cast<unsigned>(field.decimals), 1) + Little(static_cast<unsigned>(field.flags), 1);
    bytes.resize((bytes.size() + 31) / 32 * 32);
    record += static_cast<std::size_t>(field.size);
  }
  bytes += '\x0D' + link;
  std::string head = std::string(1, version) + "\x18\x06\x01" + std::string(4, '\0') + Little(32 + bytes.size(), 2) +
                     Little(record, 2);
  head.resize(32);
  head[28] = tags ? '\x03' : '\x02';
  head[29] = '\x03';
  return head + bytes;
}

class TDBaseSources final : public TSourceMaker {
 public:
  const TSketchDialect& Dialect() const override { return kDBase; }

  std::string Make(TSketch& sketch, const std::string& folder, TRandom& /*random*/) override {
    for (TSketchTable& table : sketch) {
      std::vector<TField> fields;
      for (TSketchColumn& column : table.columns) {
        const char type = static_cast<char>(column.type->code);
        if (type == 'N' || type == 'F') TakeWidth(column);
        fields.push_back({Latin(column.name), type, column.size + (column.scale > 0 ? 1 : 0), column.scale});
      }
      std::string bytes = Head('\x03', fields, false, "");
      bytes[28] = '\0';
      PutFile(folder + "/" + table.name + ".dbf", bytes + '\x1A');
    }
    return "DBF:folder=" + folder;
  }

  // The point and a digit before it take places of the field.
  static void TakeWidth(TSketchColumn& column) {
    column.scale = column.size < 2 ? 0 : std::min(column.scale, column.size - 1);
    if (column.scale > 0 && column.size > 19) column.size = 19;
  }
};

// --- FoxPro

// The file of tags, whose leaf has all their names.
std::string Tags(const TSketchTable& table) {
  constexpr std::size_t kPage = 512, kHead = 1024, kName = 10;
  const auto head = [](std::uint64_t root, std::size_t size, int options, const std::string& expression) {
    return Padded(Padded(Little(root, 4) + "\xFF\xFF\xFF\xFF" + std::string(4, '\0') + Little(size, 2) +
                             Little(static_cast<unsigned>(options), 1) + '\x01',
                         kPage) +
                      expression,
                  kHead);
  };
  std::string entries, names, heads;
  for (const TSketchKey& key : table.keys) {
    const std::size_t blanks = kName - key.name.size();
    entries += Little((kHead + kPage + heads.size()) | static_cast<std::uint64_t>(blanks) << 28U, 4);
    names.insert(0, key.name);
    heads += head(0, kName, key.kind == ESketchKey::Plain ? 0x60 : 0x64, table.columns[key.columns[0]].name);
  }
  std::string leaf = Little(3, 2) + Little(table.keys.size(), 2) + std::string(8, '\xFF') + Little(0, 2) +
                     Little(0xFFFFFF, 4) + "\x0F\x0F\x18\x04\x04\x04" + entries;
  leaf.resize(kPage - names.size());
  return head(kHead, kName, 0xE0, "") + leaf + names + heads;
}

class TDatabase {
 public:
  int Add(const char* type, int parent, const std::string& name, const std::string& properties,
          const std::string& rules = "") {
    records_ += ' ' + Little(static_cast<unsigned>(++count_), 4) + Little(static_cast<unsigned>(parent), 4) +
                Padded(type, 10, ' ') + Padded(name, 128, ' ') + Little(Memo(properties), 4) + Little(0, 4) +
                Padded(rules, 6, ' ') + Little(0, 4);
    return count_;
  }
  static std::string Property(int number, const std::string& value) {
    const std::string text = Latin(value) + '\0';
    return value.empty() ? ""
                         : Little(text.size() + 7, 4) + Little(1, 2) + Little(static_cast<unsigned>(number), 1) + text;
  }
  void Put(const std::string& path) const {
    const std::vector<TField> fields = {
        {"OBJECTID", 'I', 4},       {"PARENTID", 'I', 4},   {"OBJECTTYPE", 'C', 10}, {"OBJECTNAME", 'C', 128},
        {"PROPERTY", 'M', 4, 0, 4}, {"CODE", 'M', 4, 0, 4}, {"RIINFO", 'C', 6},      {"USER", 'M', 4}};
    std::string head = Head('\x30', fields, true, std::string(263, '\0'));
    head.replace(4, 4, Little(static_cast<unsigned>(count_), 4));
    PutFile(path + ".dbc", head + records_ + '\x1A');
    PutFile(path + ".dct",
            Padded(Big(8 + memos_.size() / kBlock, 4) + std::string(2, '\0') + Big(kBlock, 2), 512) + memos_);
  }

 private:
  static constexpr std::size_t kBlock = 64;

  std::size_t Memo(const std::string& text) {
    if (text.empty()) return 0;
    const std::size_t at = 8 + memos_.size() / kBlock;
    memos_ += Big(1, 4) + Big(text.size(), 4) + text;
    memos_.resize((memos_.size() + kBlock - 1) / kBlock * kBlock);
    return at;
  }

  int count_ = 0;
  std::string records_, memos_;
};

class TFoxProSources final : public TSourceMaker {
 public:
  const TSketchDialect& Dialect() const override { return kFoxPro; }

  std::string Make(TSketch& sketch, const std::string& folder, TRandom& /*random*/) override {
    TDatabase database;
    database.Add("Database", 1, "Database", "");
    for (std::size_t i = 0; i < sketch.size(); ++i) {
      AddReferenceTags(sketch[i]);
      PutTable(sketch[i], Format("%s/t%d", folder, i));
      AddTable(sketch[i], Format("t%d.dbf", i), sketch, database);
    }
    database.Put(folder + "/shop");
    return "FoxPro:folder=" + folder + "/shop.dbc";
  }

 private:
  // A relation is one of tags.
  static void AddReferenceTags(TSketchTable& table) {
    for (TSketchReference& reference : table.references) {
      reference.name = Format("R%d", reference.columns[0]);
      table.keys.push_back({reference.name, ESketchKey::Plain, reference.columns, {false}});
    }
  }

  static void PutTable(TSketchTable& table, const std::string& path) {
    constexpr int kNullable = 2, kBinary = 4, kCounts = 12;
    std::vector<TField> fields;
    int bits = 0;
    for (TSketchColumn& column : table.columns) {
      const char type = static_cast<char>(column.type->code);
      if (type == 'N') TDBaseSources::TakeWidth(column);
      const bool varies = type == 'V' || type == 'Q';
      bits += (column.not_null ? 0 : 1) + (varies ? 1 : 0);
      fields.push_back(
          {Format("F%d", fields.size()), type, column.size + (type == 'N' && column.scale > 0 ? 1 : 0), column.scale,
           (column.not_null ? 0 : kNullable) | (column.counts ? kCounts : 0) | (type == 'Q' ? kBinary : 0)});
    }
    if (bits > 0) fields.push_back({"_NullFlags", '0', (bits + 7) / 8, 0, 5});
    PutFile(path + ".dbf", Head('\x32', fields, !table.keys.empty(), Padded("shop.dbc", 263)) + '\x1A');
    if (!table.keys.empty()) PutFile(path + ".cdx", Tags(table));
  }

  static void AddTable(const TSketchTable& table, const std::string& file, const TSketch& sketch, TDatabase& database) {
    const bool primary = !table.keys.empty() && table.keys[0].kind == ESketchKey::Primary;
    const auto property = TDatabase::Property;
    const int id =
        database.Add("Table", 1, table.name,
                     property(1, file) + property(7, table.comment) + property(20, primary ? table.keys[0].name : ""));
    for (const TSketchColumn& column : table.columns)
      database.Add("Field", id, column.name,
                   property(7, column.comment) + property(9, StrReplace(column.check.value_or(""), "#", column.name)) +
                       property(11, column.default_text.value_or("")));
    for (const TSketchReference& reference : table.references) {
      const TSketchTable& parent = sketch[reference.table];
      const auto key = std::ranges::find_if(
          parent.keys, [&](const TSketchKey& each) { return each.columns == reference.references; });
      database.Add(
          "Relation", id, "Relation 1",
          property(13, reference.name) + property(18, parent.name) + property(19, key->name),
          std::string(kFoxPro.update_rules[reference.update_rule]) + kFoxPro.delete_rules[reference.delete_rule]);
    }
  }
};

}  // namespace

std::unique_ptr<TSourceMaker> MakeDbfSources() { return std::make_unique<TDBaseSources>(); }
std::unique_ptr<TSourceMaker> MakeFoxProSources() { return std::make_unique<TFoxProSources>(); }

}  // namespace velmora::testing
