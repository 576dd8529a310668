// SPDX-License-Identifier: GPL-3.0-or-later
#include "fleet/TargetList.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "app/SourceText.h"
#include "engines/mysql/OfflineEngine.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kCannotRead[] = "Cannot read the list of targets %s: %s";
constexpr char kLine[] = "%s: line %d: %s";
constexpr char kNoText[] = "this is no text: a list has a source a line";
constexpr char kTooLong[] = "no source is as long as this line";
constexpr char kEmpty[] = "%s lists no target: give a source a line";
constexpr char kInput[] = "a list names no standard input: give a file";
constexpr char kPatternPlace[] =
    "a * or ? may stand in the name of the database alone, as in mysql://USER@HOST/tenant_*";
constexpr std::size_t kLongestLine = 8192;  // bytes

// A pipe would be waited for, and can be read but once.
void CheckFile(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) RaiseError(Format(kCannotRead, path, std::strerror(errno)));
  if (S_ISDIR(status.st_mode)) RaiseError(Format(kCannotRead, path, "it is a folder"));
  if (!S_ISREG(status.st_mode)) RaiseError(Format(kCannotRead, path, "it is no regular file"));
}

bool IsText(std::string_view line) {
  return std::ranges::none_of(line, [](char c) { return static_cast<unsigned char>(c) < ' ' && c != '\t'; });
}

std::string WithoutSecrets(const std::string& source) {
  std::string shown = source;
  const std::vector<TTextRange> secrets = SecretsOfSource(source);
  for (std::size_t i = secrets.size(); i-- > 0;) shown.replace(secrets[i].start, secrets[i].length, "***");
  return shown;
}

bool IsAddress(const std::string& text) {
  return SameText(std::string_view(text).substr(0, kServerScheme.size()), kServerScheme);
}

// Where the database begins in an address; npos where it has none. The last "@" ends the account.
std::size_t DatabaseStart(const std::string& text) {
  const std::size_t at = text.rfind('@');
  const std::size_t slash = text.find('/', at == std::string::npos ? kServerScheme.size() : at);
  return slash == std::string::npos ? slash : slash + 1;
}

TListedSource ReadLine(const std::string& text, const TSourceSettings& settings) {
  if (text.size() > kLongestLine) RaiseError(kTooLong);
  if (!IsText(text)) RaiseError(kNoText);
  TListedSource listed{0, text, {}, WithoutSecrets(text), false};
  if (IsAddress(text)) {
    const std::size_t database = DatabaseStart(text);
    if (database != std::string::npos) listed.pattern = TNamePattern(std::string_view(text).substr(database));
    if (listed.pattern.Any()) listed.source.resize(database);
    if (!listed.pattern.Any() && text.find('*', text.rfind('@') + 1) != std::string::npos) RaiseError(kPatternPlace);
  }
  if (text == kStandardInput || text.starts_with(kStandardInput + std::string("#"))) RaiseError(kInput);
  const std::unique_ptr<TDBConn> made =
      MakeTarget(listed.pattern.Any() ? Format("%sany", listed.source) : listed.source, settings);
  listed.on_server = dynamic_cast<TDBConnMySQLOffline*>(made.get()) == nullptr;
  return listed;
}

}  // namespace

std::vector<TListedSource> ReadTargetList(const std::string& path, const TSourceSettings& settings) {
  CheckFile(path);
  const TStringList lines = LinesOf(ReadFileText(path));
  std::vector<TListedSource> list;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const std::string text = Trim(lines[i]);
    if (text.empty() || text.starts_with('#')) continue;
    try {
      list.push_back(ReadLine(text, settings));
      list.back().line = i + 1;
    } catch (const EAbort&) {
      throw;
    } catch (const EVelmora& error) {
      RaiseError(Format(kLine, path, i + 1, error.what()));
    }
  }
  if (list.empty()) RaiseError(Format(kEmpty, path));
  return list;
}

bool ShowsPasswords(const std::string& path, const std::vector<TListedSource>& list) {
  struct stat status {};
  const bool open = stat(path.c_str(), &status) == 0 && (status.st_mode & (S_IRGRP | S_IROTH)) != 0;
  return open && std::ranges::any_of(list, [](const TListedSource& of) { return !SecretsOfSource(of.source).empty(); });
}

}  // namespace velmora
