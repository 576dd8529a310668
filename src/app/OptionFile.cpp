// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/OptionFile.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string_view>
#include <utility>

#include "app/SourceText.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr int kDeepest = 10;  // files that include each other
constexpr std::size_t kMostFiles = 1000;
constexpr std::size_t kLongest = 1 << 20;  // bytes of a file

constexpr char kTooLong[] = "%s is no option file: it has more than 1 MB";
constexpr char kTooDeep[] = "%s: line %d: files include each other more than %d deep";
constexpr char kTooMany[] = "%s: line %d: more than %d files are included";
constexpr char kNoGroup[] = "%s: line %d: an option stands before any group such as [client]";
constexpr char kOpenGroup[] = "%s: line %d: a group begins, and no ] ends it";
constexpr char kFault[] = "%s: line %d: %s";
constexpr char kNoMode[] = "ssl-mode is none of DISABLED, PREFERRED, REQUIRED, VERIFY_CA, VERIFY_IDENTITY";
constexpr char kNoPort[] = "port is no number from 1 to 65535";
constexpr char kWritable[] = "%s is not read: every user of this machine may write it; take that away by chmod o-w";
constexpr char kReadable[] =
    "%s holds a password, and every user of this machine can read it: take that away by chmod o-r";

bool IsOurGroup(const std::string& name) {
  return InList(name, {"client", "client-server", "client-mariadb", "velmora"});
}

struct TOption {
  std::string_view name, key;
};
constexpr TOption kOptions[] = {{"host", "server"},       {"port", "port"},         {"socket", "socket"},
                                {"user", "username"},     {"password", "password"}, {"ssl-ca", "tls_ca"},
                                {"ssl-cert", "tls_cert"}, {"ssl-key", "tls_key"}};
constexpr std::string_view kTls = "tls";

struct TMode {
  std::string_view mode, tls;
};
constexpr TMode kModes[] = {{"DISABLED", "off"},
                            {"PREFERRED", "preferred"},
                            {"REQUIRED", "verify-ca"},
                            {"VERIFY_CA", "verify-ca"},
                            {"VERIFY_IDENTITY", "required"}};

// Up to a # that stands outside quotes.
std::string_view WithoutComment(std::string_view line) {
  char quote = 0;
  bool escaped = false;
  for (std::size_t at = 0; at < line.size(); ++at) {
    const char c = line[at];
    if ((c == '\'' || c == '"') && !escaped) quote = quote == 0 ? c : quote == c ? '\0' : quote;
    if (quote == 0 && c == '#') return line.substr(0, at);
    escaped = quote != 0 && c == '\\' && !escaped;
  }
  return line;
}

// The letters that stand for others behind a backslash; any other pair stays as it is.
std::string Unescaped(std::string_view value) {
  constexpr std::string_view kWritten = "ntrbs\"'\\";
  constexpr std::string_view kMeant = "\n\t\r\b \"'\\";
  std::string text;
  for (std::size_t at = 0; at < value.size(); ++at) {
    const std::size_t letter =
        value[at] == '\\' && at + 1 < value.size() ? kWritten.find(value[at + 1]) : std::string_view::npos;
    text += letter == std::string_view::npos ? value[at] : kMeant[letter];
    if (letter != std::string_view::npos) ++at;
  }
  return text;
}

std::string ValueOf(std::string_view text) {
  const bool quoted = text.size() > 1 && (text.front() == '\'' || text.front() == '"') && text.front() == text.back();
  return Unescaped(quoted ? text.substr(1, text.size() - 2) : text);
}

// "loose-ssl_ca" is ssl-ca.
std::string PlainName(std::string_view name) {
  constexpr std::string_view kLoose = "loose-";
  const std::string plain = StrReplace(name, "_", "-");
  return plain.starts_with(kLoose) ? plain.substr(kLoose.size()) : plain;
}

class TReader {
 public:
  TOptionFile Read(const std::string& path) {
    ReadFile(path, 0);
    return std::move(result_);
  }

 private:
  struct TPlace {
    const std::string& path;
    std::size_t line;
    int depth;
  };

  [[noreturn]] static void Fail(const TPlace& place, const char* fault) {
    RaiseError(Format(kFault, ShownPath(place.path), place.line, fault));
  }

  void ReadFile(const std::string& path, int depth) {
    const std::string text = ReadFileBytes(path, kLongest + 1);
    if (text.size() > kLongest) RaiseError(Format(kTooLong, ShownPath(path)));
    struct stat info {};
    const bool is_file = stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
    if (is_file && (info.st_mode & S_IWOTH) != 0) RaiseError(Format(kWritable, path));
    const bool had_secret = std::exchange(has_secret_, false);
    ReadLines(LinesOf(text), path, depth);
    if (has_secret_ && is_file && (info.st_mode & S_IROTH) != 0) result_.warnings.push_back(Format(kReadable, path));
    has_secret_ = had_secret;
  }

  void ReadLines(const TStringList& lines, const std::string& path, int depth) {
    std::optional<bool> ours;  // the group; nothing before any
    for (std::size_t i = 0; i < lines.size(); ++i) {
      const TPlace place{path, i + 1, depth};
      const std::string_view line = TrimView(lines[i]);
      if (line.empty() || line.front() == '#' || line.front() == ';') continue;
      if (line.front() == '!')
        Include(line, place);
      else if (line.front() == '[')
        ours = IsOurGroup(GroupOf(line, place));
      else if (!ours)
        RaiseError(Format(kNoGroup, ShownPath(path), place.line));
      else if (*ours)
        TakeLine(TrimView(WithoutComment(line)), place);
    }
  }

  static std::string GroupOf(std::string_view line, const TPlace& place) {
    const std::size_t end = line.find(']');
    if (end == std::string_view::npos) RaiseError(Format(kOpenGroup, ShownPath(place.path), place.line));
    return Trim(line.substr(1, end - 1));
  }

  void Include(std::string_view line, const TPlace& place) {
    const std::size_t blank = std::min(line.find_first_of(" \t"), line.size());
    const std::string_view word = line.substr(0, blank);
    const std::string path = Trim(line.substr(blank));
    if (word == "!include")
      IncludeFile(path, place);
    else if (word == "!includedir")
      for (const std::string& file : FilesIn(path)) IncludeFile(file, place);
  }

  void IncludeFile(const std::string& path, const TPlace& place) {
    if (place.depth + 1 >= kDeepest) RaiseError(Format(kTooDeep, ShownPath(place.path), place.line, kDeepest));
    if (++files_ > kMostFiles) RaiseError(Format(kTooMany, ShownPath(place.path), place.line, kMostFiles));
    ReadFile(path, place.depth + 1);
  }

  static TStringList FilesIn(const std::string& folder) {
    TStringList files;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error))
      if (entry.path().extension() == ".cnf") files.push_back(entry.path().string());
    if (error) RaiseError(Format("Cannot read %s: %s", folder, error.message()));
    std::ranges::sort(files);
    return files;
  }

  void TakeLine(std::string_view line, const TPlace& place) {
    const std::size_t equals = std::min(line.find('='), line.size());
    const bool has_value = equals < line.size();
    Take(PlainName(TrimView(line.substr(0, equals))), has_value ? ValueOf(TrimView(line.substr(equals + 1))) : "",
         has_value, place);
  }

  void Take(const std::string& name, const std::string& value, bool has_value, const TPlace& place) {
    if (name == "ssl-mode") return TakeMode(value, place);
    if (name == "ssl-verify-server-cert" && (!has_value || IndexOf({"1", "on", "true"}, value) != kNotInList))
      result_.values[std::string(kTls)] = "required";
    const auto* const option = std::ranges::find(kOptions, name, &TOption::name);
    if (option == std::end(kOptions) || !has_value) return;  // "password" alone asks for it
    if (name == "port") CheckPort(value, place);
    has_secret_ = has_secret_ || (name == "password" && !value.empty());
    result_.values[std::string(option->key)] = value;
  }

  void TakeMode(const std::string& value, const TPlace& place) {
    const auto* const row = std::ranges::find_if(kModes, [&](const TMode& mode) { return SameText(mode.mode, value); });
    if (row == std::end(kModes)) Fail(place, kNoMode);
    result_.values[std::string(kTls)] = row->tls;
  }

  static void CheckPort(const std::string& value, const TPlace& place) {
    try {
      ParsePort(value);
    } catch (const EVelmora&) {
      Fail(place, kNoPort);
    }
  }

  TOptionFile result_;
  std::size_t files_ = 0;
  bool has_secret_ = false;  // the file that is read, or one that it includes
};

}  // namespace

TOptionFile ReadOptionFile(const std::string& path) { return TReader().Read(path); }

}  // namespace velmora
