// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/sheet/XlsxWorkbook.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "formats/sheet/CellFormats.h"
#include "formats/sheet/SheetBudget.h"
#include "formats/sheet/XmlPart.h"
#include "formats/sheet/ZipParts.h"
#include "util/Dates.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNoWorkbook[] = "it is a Zip archive that holds no Excel workbook";
constexpr char kBinary[] = "it is a binary workbook (.xlsb). Open it in a spreadsheet program and save it as .xlsx";
constexpr char kNoSheet[] = "the workbook is damaged: it does not say where its sheet \"%s\" is";
constexpr char kNoSheetPart[] = "the workbook is damaged: its sheet \"%s\" is none";
constexpr char kNoText[] = "the workbook is damaged: sheet \"%s\" uses shared text %s of %d";
constexpr char kStray[] = "the workbook is damaged: sheet \"%s\" has a cell at \"%s\"";

constexpr std::uint32_t kMostRows = 1048576, kMostColumns = 16384;

std::optional<std::uint32_t> WholeOf(std::string_view digits) {
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (error != std::errc() || end != digits.data() + digits.size()) return std::nullopt;
  return number;
}

bool IsTrue(std::string_view text) { return text == "1" || text == "true"; }

// --- How the parts belong together

struct TRelation {
  std::string kind;  // the last word of its type
  std::string part;
};
using TRelations = std::map<std::string, TRelation, std::less<>>;  // by their ids

std::string FolderOf(std::string_view part) { return std::string(part.substr(0, part.rfind('/') + 1)); }

// `target` as seen from `folder`, which is empty or ends in "/".
std::string PartAt(const std::string& folder, const std::string& target) {
  std::string rest = StrReplace(target, "\\", "/");
  std::string path = rest.starts_with('/') ? "" : folder;
  while (!rest.empty()) {
    const std::string word = StrChop("/", rest, true);
    if (word == "..")
      path = path.empty() ? path : FolderOf(std::string_view(path).substr(0, path.size() - 1));
    else if (!word.empty() && word != ".")
      path += word + (rest.empty() ? "" : "/");
  }
  return path;
}

// Of a part, or of the whole archive for "".
TRelations RelationsOf(TZipParts& parts, const std::string& part) {
  const std::string folder = FolderOf(part);
  TXmlPart xml(parts, folder + "_rels/" + part.substr(folder.size()) + ".rels");
  TRelations relations;
  while (xml.Next(TXmlPart::kDocument)) {
    if (xml.Name() != "Relationship" || xml.Attribute("TargetMode") == "External") continue;
    const std::string type(xml.Attribute("Type"));
    const std::string id(xml.Attribute("Id"));
    relations[id] = {type.substr(type.rfind('/') + 1), PartAt(folder, std::string(xml.Attribute("Target")))};
  }
  return relations;
}

const TRelation* FindKind(const TRelations& relations, std::string_view kind) {
  const auto found = std::ranges::find_if(relations, [&](const auto& each) { return each.second.kind == kind; });
  return found == relations.end() ? nullptr : &found->second;
}

// --- What the workbook says for all its sheets

struct TSheetEntry {
  std::string name;
  std::string part;
};

struct TBook {
  TCellFormats formats;
  std::vector<std::string> texts;  // shared
  TSheetBudget budget;
};

std::string WorkbookPart(TZipParts& parts) {
  const TRelations relations = RelationsOf(parts, "");
  const TRelation* workbook = FindKind(relations, "officeDocument");
  if (workbook == nullptr) RaiseError(kNoWorkbook);
  if (workbook->part.ends_with(".bin")) RaiseError(kBinary);
  return workbook->part;
}

// The worksheets; charts and macro sheets are of other kinds.
std::vector<TSheetEntry> ReadWorkbook(TZipParts& parts, const std::string& part, const TRelations& relations,
                                      TBook& book) {
  std::vector<TSheetEntry> sheets;
  TXmlPart xml(parts, part);
  if (!xml.Next(TXmlPart::kDocument) || xml.Name() != "workbook") RaiseError(kNoWorkbook);
  while (xml.Next(TXmlPart::kDocument)) {
    if (xml.Name() == "workbookPr" && IsTrue(xml.Attribute("date1904"))) book.formats.CountFrom1904();
    if (xml.Name() != "sheet") continue;
    std::string name(xml.Attribute("name"));
    const std::string_view id = xml.Attribute("id");
    if (id.empty()) continue;  // a module of macros, as some programs leave it behind
    const auto relation = relations.find(id);
    if (relation == relations.end()) RaiseError(Format(kNoSheet, name));
    if (relation->second.kind == "worksheet") sheets.push_back({std::move(name), relation->second.part});
  }
  return sheets;
}

void ReadStyles(TZipParts& parts, const std::string& part, TCellFormats& formats) {
  TXmlPart xml(parts, part);
  const auto format = [&] { return WholeOf(xml.Attribute("numFmtId")).value_or(0); };
  while (xml.Next(TXmlPart::kDocument)) {
    const std::string_view name = xml.Name();
    if (name == "numFmts") {
      for (const int depth = xml.Depth(); xml.Next(depth);)
        formats.AddPattern(format(), std::string(xml.Attribute("formatCode")));
    } else if (name == "cellXfs") {
      for (const int depth = xml.Depth(); xml.Next(depth);)
        if (xml.Name() == "xf") formats.AddStyle(format());
    } else if (name == "dxfs") {
      xml.Skip();  // formats that depend on conditions
    }
  }
}

// Characters that XML has no place for are written as in "_x000D_".
std::string WithoutEscapes(std::string text) {
  for (std::size_t at = text.find("_x"); at < text.size(); at = text.find("_x", at + 1)) {
    unsigned unit = 0;
    const char* digits = text.data() + at + 2;
    if (text.size() < at + 7 || text[at + 6] != '_' || std::from_chars(digits, digits + 4, unit, 16).ptr != digits + 4)
      continue;
    if (unit < 0x80) text.replace(at, 7, 1, static_cast<char>(unit));
  }
  return text;
}

// The text of a cell: the pieces of it that differ in their look, without what says how to pronounce it.
std::string RichText(TXmlPart& xml) {
  std::string text;
  for (const int depth = xml.Depth(); xml.Next(depth);) {
    const std::string_view name = xml.Name();
    if (name == "t")
      text += xml.Text();
    else if (name == "rPh")
      xml.Skip();
  }
  return WithoutEscapes(std::move(text));
}

void ReadTexts(TZipParts& parts, const std::string& part, std::vector<std::string>& texts) {
  TXmlPart xml(parts, part);
  while (xml.Next(TXmlPart::kDocument))
    if (xml.Name() == "si") texts.push_back(RichText(xml));
}

// --- One sheet

class TSheetPart {
 public:
  TSheetPart(TBook& book, const TSheetEntry& entry, TZipParts& parts)
      : book_(book), xml_(parts, entry.part), sheet_{.name = entry.name} {}

  TSheet Read();

 private:
  void FindRow();
  void FindCell();
  void ReadCell();
  void Put(TVariant value);
  TVariant ValueOf(std::string_view type, std::size_t style, std::string text) const;
  const std::string& SharedText(const std::string& number) const;

  TBook& book_;
  TXmlPart xml_;
  TSheet sheet_;
  std::uint32_t row_ = 0, column_ = 0;  // of the cell, from 1
};

TSheet TSheetPart::Read() {
  if (!xml_.Next(TXmlPart::kDocument) || xml_.Name() != "worksheet") RaiseError(Format(kNoSheetPart, sheet_.name));
  while (xml_.Next(TXmlPart::kDocument)) {
    const std::string_view name = xml_.Name();
    if (name == "row")
      FindRow();
    else if (name == "c")
      ReadCell();
  }
  return std::move(sheet_);
}

// A row and a cell that do not say where they are follow the ones before.
void TSheetPart::FindRow() {
  const std::string_view place = xml_.Attribute("r");
  row_ = place.empty() ? row_ + 1 : WholeOf(place).value_or(0);
  column_ = 0;
  if (row_ == 0 || row_ > kMostRows) RaiseError(Format(kStray, sheet_.name, place));
}

void TSheetPart::FindCell() {
  const std::string_view place = xml_.Attribute("r");
  if (!place.empty()) {
    std::size_t letters = 0;
    for (column_ = 0; letters < place.size() && letters < 4 && place[letters] >= 'A' && place[letters] <= 'Z';
         ++letters)
      column_ = column_ * 26 + static_cast<std::uint32_t>(place[letters] - 'A' + 1);
    row_ = WholeOf(place.substr(letters)).value_or(0);
  } else {
    ++column_;
  }
  if (row_ == 0 || row_ > kMostRows || column_ == 0 || column_ > kMostColumns)
    RaiseError(Format(kStray, sheet_.name, place));
}

void TSheetPart::ReadCell() {
  FindCell();
  const std::string type(xml_.Attribute("t"));
  const std::size_t style = WholeOf(xml_.Attribute("s")).value_or(0);
  for (const int depth = xml_.Depth(); xml_.Next(depth);) {
    const std::string_view name = xml_.Name();
    if (name == "v")
      Put(ValueOf(type, style, xml_.Text()));
    else if (name == "is")
      Put(RichText(xml_));
  }
}

const std::string& TSheetPart::SharedText(const std::string& number) const {
  const std::optional<std::uint32_t> index = WholeOf(Trim(number));
  if (!index || *index >= book_.texts.size()) RaiseError(Format(kNoText, sheet_.name, number, book_.texts.size()));
  return book_.texts[*index];
}

// "2004-01-14T18:00:00.000Z", with less of it from the right.
std::optional<TMoment> MomentOf(const std::string& text) {
  constexpr std::size_t kDay = 10, kToTheSecond = 19;
  if (text.size() < kDay) return std::nullopt;
  try {
    return TMoment{ParseDateTime(StrReplace(text, "T", " ").substr(0, kToTheSecond))};
  } catch (const EVelmora&) {
    return std::nullopt;
  }
}

TVariant TSheetPart::ValueOf(std::string_view type, std::size_t style, std::string text) const {
  if (type == "s") return SharedText(text);
  if (type == "str") return WithoutEscapes(std::move(text));
  if (type == "e") return {};
  if (type == "b") return IsTrue(Trim(text)) ? 1.0 : 0.0;
  if (type == "d")
    if (const std::optional<TMoment> moment = MomentOf(text)) return *moment;
  if (const std::optional<double> number = TryStrToFloat(Trim(text))) return book_.formats.Value(*number, style);
  return text;
}

void TSheetPart::Put(TVariant value) {
  const auto* text = std::get_if<std::string>(&value);
  if (VarIsNull(value) || (text != nullptr && text->empty())) return;
  book_.budget.Take(value);
  sheet_.cells.push_back({row_ - 1, column_ - 1, std::move(value)});
}

}  // namespace

std::vector<TSheet> ReadXlsxWorkbook(std::string_view bytes) {
  TZipParts parts(bytes);
  TBook book;
  const std::string part = WorkbookPart(parts);
  const TRelations relations = RelationsOf(parts, part);
  const std::vector<TSheetEntry> entries = ReadWorkbook(parts, part, relations, book);
  if (const TRelation* styles = FindKind(relations, "styles")) ReadStyles(parts, styles->part, book.formats);
  // Some writers name the part without writing it where no cell has a shared text.
  if (const TRelation* texts = FindKind(relations, "sharedStrings"); texts != nullptr && parts.Has(texts->part))
    ReadTexts(parts, texts->part, book.texts);
  std::vector<TSheet> sheets;
  sheets.reserve(entries.size());
  for (const TSheetEntry& entry : entries) sheets.push_back(TSheetPart(book, entry, parts).Read());
  return sheets;
}

}  // namespace velmora
