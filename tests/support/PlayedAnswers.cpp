// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/PlayedAnswers.h"

#include <filesystem>
#include <stdexcept>

#include "util/Files.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora::testing {

namespace {

TStringList Parts(std::string_view text, char separator) {
  TStringList parts;
  SplitPlain(separator, text, parts);
  for (std::string& part : parts) part = Trim(part);
  return parts;
}

std::string BytesOfHex(const std::string& digits) {
  std::string bytes;
  for (std::size_t at = 0; at < digits.size(); at += 2)
    bytes += static_cast<char>(std::stoi(digits.substr(at, 2), nullptr, 16));
  return bytes;
}

std::optional<std::string> FieldOf(const std::string& text) {
  if (text == "null") return std::nullopt;
  if (text.starts_with("0x")) return BytesOfHex(text.substr(2));
  return text.starts_with('"') ? text.substr(1, text.size() - 2) : text;
}

void AddColumns(TPlayedAnswer& answer, std::string text) {
  const std::size_t times = text.find(" x ");
  const int count = times == std::string::npos ? 1 : std::stoi(text);
  if (times != std::string::npos) text.erase(0, times + 3);
  for (int i = 1; i <= count; ++i)
    for (const std::string& column : Parts(StrReplace(text, "#", std::to_string(i)), ';')) {
      const std::size_t blank = column.rfind(' ');
      answer.columns.push_back({column.substr(0, blank), column.substr(blank + 1)});
    }
}

void AddRow(TPlayedAnswer& answer, const TStringList& fields) {
  TPlayedAnswer::TRow& row = answer.rows.emplace_back();
  for (const std::string& field : fields) row.push_back(FieldOf(field));
  if (row.size() > answer.columns.size()) throw std::runtime_error("too long a row: " + JoinList(fields, " | "));
  row.resize(answer.columns.size());
}

class TAnswersReader {
 public:
  explicit TAnswersReader(const std::string& file) : folder_(std::filesystem::path(file).parent_path()) {}

  TPlayedAnswers Read(const std::string& text) {
    for (const std::string& line : LinesOf(text))
      if (line.starts_with("  "))
        Indented(line);
      else if (!line.empty() && !line.starts_with('#'))
        Head(line.substr(0, line.find(' ')), Trim(line.substr(line.find(' ') + 1)));
    return std::move(answers_);
  }

 private:
  void Head(const std::string& word, const std::string& rest) {
    if (word == "query") {
      query_ = rest.ends_with(".sql") ? Trim(ReadFileText(folder_ / rest)) : rest;
      answer_ = query_.find("%s") == std::string::npos ? &answers_[query_] : &form_;
      *answer_ = {};
    } else if (word == "of") {
      answer_ = &answers_[StrReplace(query_, "%s", StrReplace(rest, "'", "''"))];
      *answer_ = form_;
    } else if (word == "error") {
      answer_->error = std::stoi(rest);
      answer_->message = Trim(rest.substr(rest.find(' ') + 1));
    } else if (word == "affected") {
      answer_->affected = std::stoll(rest);
    } else {
      throw std::runtime_error("\"" + word + "\" is no word of played answers");
    }
  }
  void Indented(const std::string& line) {
    if (!answer_->columns.empty()) return AddRow(*answer_, Parts(line, '|'));
    for (const std::string& column : Parts(line, '|')) AddColumns(*answer_, column);
  }

  const std::filesystem::path folder_;
  TPlayedAnswers answers_;
  std::string query_;
  TPlayedAnswer form_;  // of a query for several names
  TPlayedAnswer* answer_ = nullptr;
};

}  // namespace

TPlayedAnswers ReadPlayedAnswers(const std::string& file) { return TAnswersReader(file).Read(ReadFileText(file)); }

}  // namespace velmora::testing
