#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "util/Text.h"

namespace velmora {

struct TScriptWarning {
  std::string text;           // without file and line
  std::size_t line = 0;       // counted from 1; 0 for the file as a whole
  bool verbose_only = false;  // of interest only to who asks what was passed over

  std::string Message() const;  // "line %d: %s"
};

struct TCreationText {
  std::string_view name;  // as written between the backticks, if there are any
  std::string_view text;  // from "create" up to before the delimiter
  std::size_t line = 0;   // of its first character
};

// The creation texts of a script: every "create table" statement in the order of the script, a database in front of
// the table's name cut out. A later text for a name that is equal but for case takes the earlier one's place. Other
// statements are passed over. What is worth telling is kept as warnings, those of the whole script first, then by line.
//
// Immutable; the texts live as long as this object, which is meant to be shared.
class TCreationScript {
 public:
  // Raises the faults of TStatementReader.
  explicit TCreationScript(std::string script);
  TCreationScript(const TCreationScript&) = delete;
  TCreationScript& operator=(const TCreationScript&) = delete;

  // Of a whole file. Raises "Cannot read %s: %s", and "%s: %s" with the file's name and the fault.
  static std::shared_ptr<const TCreationScript> Load(const std::string& path);

  const std::vector<TCreationText>& Tables() const { return tables_; }
  const TCreationText* Find(std::string_view name) const;  // ignoring case; null when there is none
  const std::vector<TScriptWarning>& Warnings() const { return warnings_; }

 private:
  struct TSpan;
  class TCollector;
  struct THash {
    std::size_t operator()(std::string_view name) const;
  };
  struct TSame {
    bool operator()(std::string_view a, std::string_view b) const { return SameText(a, b); }
  };

  void Pack(std::vector<TSpan>& spans);
  void AddTables(const std::vector<TSpan>& spans);

  std::string buffer_;  // the recorded texts, one behind the other
  std::vector<TCreationText> tables_;
  std::unordered_map<std::string_view, std::size_t, THash, TSame> index_;
  std::vector<TScriptWarning> warnings_;
};

}  // namespace velmora
