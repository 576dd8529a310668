// SPDX-License-Identifier: GPL-3.0-or-later

// The cases of tests/data/formats through the readers: tables, structure and rows of the sound files, and what becomes
// of changed ones. A line of "variants" is a change of the bytes, "=>", and what the outcome has that the sound one
// lacks.

#include <algorithm>
#include <filesystem>

#include "formats/dbf/DBaseFolder.h"
#include "formats/dbf/FoxProFolder.h"
#include "formats/mdb/MdbReader.h"
#include "formats/paradox/ParadoxReader.h"
#include "formats/sheet/ExcelFile.h"
#include "formats/sheet/LotusFile.h"
#include "support/FormatCase.h"
#include "support/LineDiff.h"
#include "support/MessageOf.h"
#include "support/ReaderText.h"
#include "support/ScratchFolder.h"
#include "support/ShownValues.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora::testing {
namespace {

using TWords = std::vector<std::string>;

std::string ParadoxText(const std::string& path) {
  TPxTable table(path, false);
  const TPxHeader& header = table.Header();
  std::string text = Format("table of version %d, %d of the key\n", header.Version(), header.primaryKeyFields);
  for (const TPxField& field : table.Fields())
    text += Format("field %s type %d at %d, %d bytes\n", field.name, field.type, field.offset, field.size);
  for (std::uint32_t i = 0; i < header.numRecords; ++i) {
    table.ReadRecord(i);
    text += "row " + ShownRow(table.Values()) + "\n";
  }
  return text;
}

struct TFormat {
  const char* name;
  std::string (*text)(const std::string& path, const TWords& words);
};

bool Has(const TWords& words, const char* word) { return std::ranges::count(words, word) > 0; }

constexpr TFormat kFormats[] = {
    {"dbase", [](const auto& path, const auto&) { return ReaderText(*OpenDBaseFolder(path)); }},
    {"foxpro", [](const auto& path, const auto&) { return ReaderText(*OpenFoxProFolder(path)); }},
#ifdef VELMORA_MDB
    {"access", [](const auto& path, const auto&) { return ReaderText(*OpenMdbFileHere(path)); }},
#endif
    {"excel",
     [](const auto& path, const auto& words) {
       return ReaderText(*OpenExcelFileHere(path, Has(words, "HDR"), Has(words, "IMEX")));
     }},
#ifdef VELMORA_LOTUS
    {"lotus", [](const auto& path, const auto&) { return ReaderText(*OpenLotusFileHere(path)); }},
#endif
    {"paradox", [](const auto& path, const auto&) { return ParadoxText(path); }},
};

// The lines of `text` without as many equal ones of `other`.
TStringList Beyond(TStringList other, const std::string& text) {
  TStringList found;
  for (const std::string& line : LinesOf(text))
    if (const auto same = std::ranges::find(other, line); same != other.end())
      other.erase(same);
    else
      found.push_back(line);
  return found;
}

// The lines that a change brings; where it brings none, those that it takes away.
std::string Outcome(const std::string& sound, const std::string& text) {
  const TStringList brought = Beyond(LinesOf(sound), text), taken = Beyond(LinesOf(text), sound);
  if (!brought.empty()) return JoinList(brought, "; ");
  if (!taken.empty()) return "no " + JoinList(taken, "; no ");
  return sound == text ? "the same" : "another order";
}

class FormatCases : public ::testing::TestWithParam<std::string> {
 protected:
  // Of words as in "foxpro shop.dbc" or "excel a.xls HDR IMEX".
  std::string Read(const TFormat& format, const TWords& words) const {
    const bool named = words.size() > 1 && words[1] != "variants";
    std::string text;
    const std::string message =
        MessageOf([&] { text = format.text(named ? folder_ / words[1] : folder_.Path(), words); });
    if (message != kNoFault) text = "fault: " + message + "\n";
    return StrReplace(StrReplace(text, folder_.Path() + "/", ""), folder_.Path(), "@");
  }

  // The lines again, with what became of each change.
  std::string Variants(const TFormatCase& files, const TFormat& format, const TWords& words, const std::string& lines) {
    const std::string& file = words.back();
    const std::string sound = Read(format, words);
    std::string text;
    for (const std::string& line : LinesOf(lines)) {
      const std::string change = line.substr(0, line.find(" => "));
      if (change == "removed")
        std::filesystem::remove(folder_ / file);
      else
        files.With(file, BytesOver(files.Bytes(file), change)).PutInto(folder_.Path());
      text += change + " => " + Outcome(sound, Read(format, words)) + "\n";
    }
    files.PutInto(folder_.Path());
    return text;
  }

  TScratchFolder folder_;
};

TEST_P(FormatCases, GiveTheirTablesOrTheirFaults) {
  const TFormatCase files = FormatCase(GetParam());
  files.PutInto(folder_.Path());
  for (const auto& [words, expected] : files.asks) {
    const auto* format = std::ranges::find(kFormats, words[0], &TFormat::name);
    if (format == std::end(kFormats)) continue;
    const std::string found = Has(words, "variants") ? Variants(files, *format, words, expected) : Read(*format, words);
    if (found != expected)
      ADD_FAILURE() << GetParam() << ": " << JoinList(words, " ") << "\n" << LineDiff(expected, found);
  }
}

INSTANTIATE_TEST_SUITE_P(All, FormatCases, ::testing::ValuesIn(FormatCaseNames()),
                         [](const auto& test) { return StrReplace(test.param, "-", "_"); });

}  // namespace
}  // namespace velmora::testing
