// SPDX-License-Identifier: GPL-3.0-or-later

// Short texts that users and other programs write: sources, connection strings, names of services, wishes, patterns,
// the statements of the file engines, versions, grants.

#include <stdexcept>
#include <string>

#include "Harnesses.h"
#include "Input.h"
#include "app/Sources.h"
#include "app/TnsNames.h"
#include "exact/compare/Collations.h"
#include "exact/compare/ServerLanguage.h"
#include "exact/run/ExactWishes.h"
#include "foreign/ForeignWishes.h"
#include "foreign/TargetServer.h"
#include "formats/dbf/DbfCodePage.h"
#include "formats/port/FileStatement.h"
#include "formats/port/InitString.h"
#include "formats/sheet/CellFormats.h"
#include "formats/text/TextFile.h"
#include "mysqltext/GrantText.h"

namespace velmora::fuzzing {
namespace {

void ReadInitString(const std::string& text) {
  const TInitString string(text);
  string.Value("Provider");
  TInitString again(std::string("a=") + InitValue(text));
  if (again.Value("A") != text) throw std::logic_error("another value: " + again.Value("A"));
}

void ReadWishes(const std::string& text) {
  Try([&] {
    const std::string written = ForeignWishesText(ReadForeignWishes(text));
    if (ForeignWishesText(ReadForeignWishes(written)) != written) throw std::logic_error("other wishes: " + written);
  });
  Try([&] {
    const std::string written = ExactWishesText(ReadExactWishes(text));
    if (ExactWishesText(ReadExactWishes(written)) != written) throw std::logic_error("other wishes: " + written);
  });
  Try([&] { ReadRename(text); });
  Try([&] { ReadMapRule(text); });
  Try([&] { ReadPattern(text); });
  Try([&] { ReadCollation(text); });
}

void SelectFrom(const std::string& text) {
  const TFileStatement statement = ParseFileStatement(text);
  RowsNeeded(statement);
  SelectRows(statement, {{"a"}, {"b"}}, {.rows = {{1, "x"}, {2, "y"}, {{}, "z"}}, .numbers = {}});
}

void ReadValue(const std::string& text) {
  TextToDate(text);
  TextToTime(text);
  TextToDateTime(text);
  TextToInteger(text);
  IsMomentPattern(text);
  CodePageNamed(text);
}

}  // namespace

void FuzzNames(std::string_view input) {
  const std::size_t way = Choose(input, 8);
  const std::string text(input);
  switch (way) {
    case 0:
      TnsNames(text);
      break;
    case 1:
      ReadInitString(text);
      break;
    case 2:
      MakeSource(text);
      break;
    case 3:
      ReadWishes(text);
      break;
    case 4:
      SelectFrom(text);
      break;
    case 5:
      TGrants(LinesOf(text)).On("shop", {"SELECT"});
      break;
    case 6:
      ReadValue(text);
      break;
    default:
      Try([&] { ReadTargetServer(text).Text(); });
      ServerName(ReadServerTraits(text));
      MatchesPattern(text.substr(0, text.size() / 2), text.substr(text.size() / 2));
  }
}

}  // namespace velmora::fuzzing
