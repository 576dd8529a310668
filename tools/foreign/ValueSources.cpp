// SPDX-License-Identifier: GPL-3.0-or-later

// Sources whose values say what their columns are: text files and workbooks.

#include <algorithm>
#include <chrono>
#include <cstdio>

#include "foreign/Sources.h"
#include "support/ByteText.h"
#include "support/FormatCase.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora::testing {

namespace {

// What the values of a column are. A type's code is one of these.
enum EKind { kSmall, kWhole, kNumber, kText, kLongText, kDay, kMoment, kClock, kCode, kMixed, kNothing, kKinds };

std::vector<TSketchType> Kinds() {
  std::vector<TSketchType> types;
  for (int kind = 0; kind < kKinds; ++kind) types.push_back({.word = "", .code = kind});
  return types;
}

const TSketchDialect kValues = {
    .types = Kinds(), .columns_alone = true, .names = {64, 31}, .refused = "/\t\"\\[]:*?,;'", .most_columns = 20};

std::string Quoted(const std::string& text) {
  return "'" + StrReplace(StrReplace(text, "\\", "\\\\"), "'", "''") + "'";
}

// A value as it stands in a file, and its kind.
struct TValue {
  std::string text;
  EKind kind = kText;
};

class TValueDrawer {
 public:
  explicit TValueDrawer(TRandom& random) : random_(random) {}

  TValue Draw(EKind kind) {
    if (kind == kMixed) kind = static_cast<EKind>(random_.Below(kDay));
    const bool most = random_.Chance(30);
    switch (kind) {
      case kSmall:
        return {most ? "-2147483648" : Format("%d", random_.Below(1000)), kind};
      case kWhole:
        return {most ? "900719925474099" : Format("%d", random_.Below(10000000000)), kind};
      case kNumber:
        return {most ? "-1.5E+300" : Format("%d.%d", random_.Below(1000), 1 + random_.Below(99)), kind};
      case kLongText:
        return {Letters(1 + random_.Below(most ? 40000 : 300)), kind};
      case kDay:
        return {most ? "9999-12-31"
                     : Format("20%02d-%02d-%02d", random_.Below(100), 1 + random_.Below(12), 1 + random_.Below(28)),
                kind};
      case kMoment:
        return {Draw(kDay).text + " " + Draw(kClock).text, kind};
      case kClock:
        return {Format("%02d:%02d:%02d", random_.Below(24), random_.Below(60), 1 + random_.Below(59)), kind};
      case kCode:
        return {"00" + std::string(random_.Below(20), '7'), kind};
      case kNothing:
        return {"", kind};
      default:
        return {Letters(1 + random_.Below(most ? 255 : 20)), kText};
    }
  }

 private:
  std::string Letters(std::size_t count) {
    constexpr const char* kLetters[] = {"x", "ö", "7", " ", "-", "z", "e", ".", "数"};
    std::string text = "t";
    while (--count > 0) text += kLetters[random_.Below(std::size(kLetters))];
    return text + "t";
  }
  TRandom& random_;
};

std::vector<std::vector<TValue>> DrawRows(TSketchTable& table, TRandom& random) {
  std::vector<std::vector<TValue>> rows;
  TValueDrawer drawer(random);
  for (std::size_t i = 1 + random.Below(40); i > 0; --i) {
    std::vector<TValue> row;
    std::vector<std::pair<std::string, std::string>> values;
    for (const TSketchColumn& column : table.columns) {
      row.push_back(drawer.Draw(random.Chance(10) ? kNothing : static_cast<EKind>(column.type->code)));
      values.emplace_back(row.back().text, row.back().text.empty() ? "null" : Quoted(row.back().text));
    }
    rows.push_back(row);
    table.rows.push_back(values);
  }
  return rows;
}

class TValueSources : public TSourceMaker {
 public:
  const TSketchDialect& Dialect() const override { return kValues; }
};

// --- Text files

class TDelimitedSources final : public TValueSources {
 public:
  std::string Make(TSketch& sketch, const std::string& folder, TRandom& random) override {
    for (TSketchTable& table : sketch) {
      std::string text;
      for (std::size_t i = 0; i < table.columns.size(); ++i) text += (i == 0 ? "" : ";") + table.columns[i].name;
      text += "\r\n";
      for (const std::vector<TValue>& row : DrawRows(table, random)) {
        for (std::size_t i = 0; i < row.size(); ++i) text += (i == 0 ? "" : ";") + Shown(row[i], random);
        text += "\r\n";
      }
      WriteFileText(folder + "/" + table.name + (random.Chance(50) ? ".csv" : ".txt"), text);
    }
    return "Text:folder=" + folder + ";separator=%3B;HDR=Y";
  }

 private:
  static std::string Shown(const TValue& value, TRandom& random) {
    return value.kind == kText && random.Chance(30) ? "\"" + value.text + "\"" : value.text;
  }
};

class TFixedSources final : public TValueSources {
 public:
  const TSketchDialect& Dialect() const override {
    static const TSketchDialect kDialect = [] {
      TSketchDialect dialect = kValues;
      dialect.shaped = false;  // where columns begin is guessed
      return dialect;
    }();
    return kDialect;
  }
  std::string Make(TSketch& sketch, const std::string& folder, TRandom& random) override {
    for (TSketchTable& table : sketch) {
      const std::vector<std::vector<TValue>> rows = DrawRows(table, random);
      std::string text;
      for (std::size_t line = 0; line <= rows.size(); ++line) {
        for (std::size_t i = 0; i < table.columns.size(); ++i)
          text += Padded(line == 0 ? table.columns[i].name : Shown(rows[line - 1][i]), Width(table, rows, i));
        text += "\n";
      }
      WriteFileText(folder + "/" + table.name + ".txt", text);
    }
    return "Text:folder=" + folder + ";separator=;HDR=Y";
  }

 private:
  // Blanks of texts would be further columns.
  static std::string Shown(const TValue& value) {
    return value.kind == kText || value.kind == kLongText ? StrReplace(value.text, " ", "_") : value.text;
  }
  static std::size_t Width(const TSketchTable& table, const std::vector<std::vector<TValue>>& rows,
                           std::size_t column) {
    std::size_t width = CharCount(table.columns[column].name);
    for (const std::vector<TValue>& row : rows) width = std::max(width, CharCount(row[column].text));
    return width + 1;
  }
  static std::string Padded(const std::string& text, std::size_t width) {
    return text + std::string(width - CharCount(text), ' ');
  }
};

// --- Workbooks

// Of a date and time as text, the number of days that a sheet has for it.
double DaysOf(const TValue& value) {
  constexpr double kBase = 25569, kSeconds = 86400;  // 1970-01-01
  int year = 1970, month = 1, day = 1, hour = 0, minute = 0, second = 0;
  if (value.kind != kClock)
    std::sscanf(value.text.c_str(), "%d-%d-%d %d:%d:%d", &year, &month, &day, &hour, &minute, &second);
  if (value.kind == kClock) std::sscanf(value.text.c_str(), "%d:%d:%d", &hour, &minute, &second);
  const auto date = std::chrono::sys_days(std::chrono::year(year) / month / day).time_since_epoch().count();
  const double clock = (hour * 3600 + minute * 60 + second) / kSeconds;
  return value.kind == kClock ? clock : kBase + static_cast<double>(date) + clock;
}

bool IsTime(const TValue& value) { return value.kind == kDay || value.kind == kMoment || value.kind == kClock; }
bool IsNumber(const TValue& value) { return value.kind == kSmall || value.kind == kWhole || value.kind == kNumber; }

class TXlsSources final : public TValueSources {
 public:
  std::string Make(TSketch& sketch, const std::string& folder, TRandom& random) override {
    std::string script;
    for (TSketchTable& table : sketch) {
      script += "sheet\t" + table.name + "\n";
      for (std::size_t i = 0; i < table.columns.size(); ++i)
        script += Format("text\t0\t%d\t%s\n", i, table.columns[i].name);
      const std::vector<std::vector<TValue>> rows = DrawRows(table, random);
      for (std::size_t row = 0; row < rows.size(); ++row)
        for (std::size_t i = 0; i < rows[row].size(); ++i) script += Cell(row + 1, i, rows[row][i]);
    }
    TFormatCase files;
    files.files = {{"!workbook.pl shop.xls", script}};
    files.PutInto(folder);
    return "Excel:filename=" + folder + "/shop.xls;HDR=Y;IMEX=Y";
  }

 private:
  static std::string Cell(std::size_t row, std::size_t column, const TValue& value) {
    const std::string place = Format("\t%d\t%d\t", row, column);
    const char* kind = value.kind == kDay ? "date" : value.kind == kClock ? "time" : "moment";
    if (value.text.empty()) return "";
    if (IsTime(value)) return kind + place + Format("%.10f", DaysOf(value)) + "\n";
    return (IsNumber(value) ? "number" : "text") + place + value.text + "\n";
  }
};

class TXlsxSources final : public TValueSources {
 public:
  std::string Make(TSketch& sketch, const std::string& folder, TRandom& random) override {
    constexpr char kMain[] = "http://schemas.openxmlformats.org/spreadsheetml/2006/main";
    constexpr char kOffice[] = "http://schemas.openxmlformats.org/officeDocument/2006/relationships";
    const std::string links = "<Relationships xmlns='http://schemas.openxmlformats.org/package/2006/relationships'>";
    const auto link = [&](const std::string& id, const std::string& kind, const std::string& target) {
      return Format("<Relationship Id='%s' Type='%s/%s' Target='%s'/>", id, kOffice, kind, target);
    };
    std::string sheets, sheet_links = link("s", "styles", "styles.xml");
    TFormatCase files;
    const auto put = [&](const std::string& part, const std::string& text) {
      files.files.emplace_back("shop.xlsx!" + part, text);
    };
    for (std::size_t i = 0; i < sketch.size(); ++i) {
      sheets += Format("<sheet name='%s' sheetId='%d' r:id='r%d'/>", Xml(sketch[i].name), i + 1, i);
      sheet_links += link(Format("r%d", i), "worksheet", Format("s%d.xml", i));
      put(Format("xl/s%d.xml", i),
          Format("<worksheet xmlns='%s'><sheetData>", kMain) + Rows(sketch[i], random) + "</sheetData></worksheet>");
    }
    put("_rels/.rels", links + link("b", "officeDocument", "/xl/workbook.xml") + "</Relationships>");
    put("xl/_rels/workbook.xml.rels", links + sheet_links + "</Relationships>");
    put("xl/workbook.xml",
        Format("<workbook xmlns='%s' xmlns:r='%s'><sheets>%s</sheets></workbook>", kMain, kOffice, sheets));
    put("xl/styles.xml",
        Format("<styleSheet xmlns='%s'><cellXfs><xf numFmtId='0'/><xf numFmtId='14'/><xf numFmtId='22'/>"
               "<xf numFmtId='21'/></cellXfs></styleSheet>",
               kMain));
    files.PutInto(folder);
    return "Excel:filename=" + folder + "/shop.xlsx;HDR=Y;IMEX=Y";
  }

 private:
  static std::string Xml(const std::string& text) {
    return StrReplace(StrReplace(StrReplace(text, "&", "&amp;"), "<", "&lt;"), "'", "&apos;");
  }
  static std::string Rows(TSketchTable& table, TRandom& random) {
    std::string text = "<row r='1'>";
    for (const TSketchColumn& column : table.columns) text += Cell({column.name});
    for (const std::vector<TValue>& row : DrawRows(table, random)) {
      text += "</row><row>";
      for (const TValue& value : row) text += Cell(value);
    }
    return text + "</row>";
  }
  static std::string Cell(const TValue& value) {
    const int style = value.kind == kDay ? 1 : value.kind == kMoment ? 2 : 3;
    if (value.text.empty()) return "<c/>";
    if (IsTime(value)) return Format("<c s='%d'><v>%.10f</v></c>", style, DaysOf(value));
    if (IsNumber(value)) return "<c><v>" + value.text + "</v></c>";
    return "<c t='inlineStr'><is><t xml:space='preserve'>" + Xml(value.text) + "</t></is></c>";
  }
};

}  // namespace

std::unique_ptr<TSourceMaker> MakeDelimitedSources() { return std::make_unique<TDelimitedSources>(); }
std::unique_ptr<TSourceMaker> MakeFixedSources() { return std::make_unique<TFixedSources>(); }
std::unique_ptr<TSourceMaker> MakeXlsSources() { return std::make_unique<TXlsSources>(); }
std::unique_ptr<TSourceMaker> MakeXlsxSources() { return std::make_unique<TXlsxSources>(); }

}  // namespace velmora::testing
