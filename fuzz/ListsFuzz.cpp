// SPDX-License-Identifier: GPL-3.0-or-later

// Files that users hand to a command: lists of targets, option files, files of creation texts under the look of lint.

#include <string>

#include "Harnesses.h"
#include "Input.h"
#include "app/OptionFile.h"
#include "app/Sources.h"
#include "core/CreationTexts.h"
#include "fleet/FleetTargets.h"
#include "fleet/TargetList.h"
#include "lint/LintSource.h"
#include "util/Files.h"

namespace velmora::fuzzing {
namespace {

void ReadList(const std::string& path, const std::string& text) {
  const std::vector<TListedSource> list = ReadTargetList(path, {});
  ShowsPasswords(path, list);
  for (const TListedSource& line : list) line.pattern.Matches(text);
}

void LookAtFile(const std::string& path) {
  const std::unique_ptr<TDBConn> source = MakeSource(path);
  CheckLintable(*source);
  if (auto* texts = dynamic_cast<TCreationTexts*>(source.get())) texts->PrepareExactTexts();
  source->Connect();
  for (const char* version : {"", "mysql 5.7.44", "mariadb 10.11"})
    Try([&] { LintSource(*source, {.version = version}); });
}

}  // namespace

void FuzzLists(std::string_view input) {
  const std::size_t way = Choose(input, 4);
  const std::string text(input);
  const std::string& folder = PutFiles({{"list", way < 3 ? input : ""}, {"t.sql", way == 3 ? input : ""}});
  switch (way) {
    case 0:
      return Try([&] { ReadList(JoinPath(folder, "list"), text); });
    case 1:
      return Try([&] { ReadOptionFile(JoinPath(folder, "list")); });
    case 2:
      return Try([&] { ReadSlice(text); });
    default:
      return Try([&] { LookAtFile(JoinPath(folder, "t.sql")); });
  }
}

}  // namespace velmora::fuzzing
