// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "core/CreationTexts.h"
#include "mysqltext/StatementStream.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {

struct TScriptWarning {
  std::string text;           // without file and line
  std::size_t line = 0;       // counted from 1; 0 for the file as a whole
  bool verbose_only = false;  // of interest only to who asks what was passed over
  bool passed_over = false;   // holds for those alone who take the creation texts, and apply no other statement
  std::string file{};         // of a folder's: which of its files

  std::string Message() const;  // "line %d: %s"
};

struct TCreationText {
  std::string_view name;    // as written between the backticks, if there are any
  std::string_view text;    // from "create" up to before the delimiter
  std::size_t line = 0;     // of its first character
  std::string_view file{};  // of a folder's: which of its files
};

// How a script is taken.
struct TScriptChoice {
  std::string database;           // of several in the script this one; empty for the only one
  bool allow_incomplete = false;  // a dump may end before its closing line
};

// The creation texts of a script: every "create table" statement in the order of the script, a database in front of
// the table's name cut out. A later text for a name that is equal but for case takes the earlier one's place, if it is
// of the same file: no two files of a folder may make the same. Other
// statements are passed over, but kept for who asks for the structure. What is worth telling is kept as warnings, those
// of the whole script first, then by line.
//
// Immutable; the texts live as long as this object, which is meant to be shared.
class TCreationScript {
 public:
  // Lines may end in CR alone. Raises the faults of TStatementReader; for a dump without its closing line "cut off:
  // ..."; for tables of several databases of which none is chosen, and for a choice that is not among them.
  explicit TCreationScript(std::string script, const TScriptChoice& choice = {});
  // Of files, each of which is read by itself and in parts: the rows of a dump are not kept in memory. Raises likewise,
  // with the file in front, and for what two files make.
  struct TFile {
    std::string path;
    bool of_folder = true;  // what stands in it is recorded with its path, which everybody else knows already
  };
  explicit TCreationScript(const std::vector<TFile>& files, const TScriptChoice& choice = {});
  TCreationScript(const TCreationScript&) = delete;
  TCreationScript& operator=(const TCreationScript&) = delete;

  // Of a whole file, or of a folder with all its files (ScriptFolder.h). Raises "Cannot read %s: %s", and "%s: %s" with
  // the file's name and the fault.
  static std::shared_ptr<const TCreationScript> Load(const std::string& path, const TScriptChoice& choice = {});

  const std::vector<TCreationText>& Tables() const { return tables_; }
  const TCreationText* Find(std::string_view name) const;  // ignoring case; null when there is none
  const std::vector<TScriptWarning>& Warnings() const { return warnings_; }
  const TStructureScript& Structure() const { return structure_; }           // `file` is left empty by the constructor
  const std::vector<TOtherObject>& OtherObjects() const { return others_; }  // with their texts, marks of versions out

 private:
  struct TSpan;
  class TCollector;
  struct THash {
    std::size_t operator()(std::string_view name) const;
  };
  struct TSame {
    bool operator()(std::string_view a, std::string_view b) const { return SameText(a, b); }
  };

  using TOpen = std::function<std::unique_ptr<TStatementStream>(const TStatementStream::TWatch& watch)>;
  struct TPartName {
    std::string shown = {};          // before errors; empty for a text that is in no file
    std::string_view recorded = {};  // with what stands there; empty where there is one file alone
  };
  void ReadPart(const TOpen& open, const TPartName& name, const TScriptChoice& choice, std::vector<TSpan>& spans);
  void ReadFile(const TFile& file, const TScriptChoice& choice, std::vector<TSpan>& spans);
  void Finish(std::vector<TSpan>& spans, const TScriptChoice& choice);
  void TakeObjects(std::vector<TOtherObject> objects, const std::string& file);
  void AddTables(const std::vector<TSpan>& spans);
  void AddTable(const TSpan& span, std::string_view text);
  void ChooseDatabase(const std::vector<TSpan>& spans, const std::string& wanted);

  std::string buffer_;  // the recorded texts, one after the other
  std::vector<TCreationText> tables_;
  std::unordered_map<std::string_view, std::size_t, THash, TSame> index_;
  std::vector<TScriptWarning> warnings_;
  std::deque<std::string> files_;                                                // of a folder
  std::set<std::string> of_objects_;                                             // databases
  std::map<std::pair<std::string, std::string>, std::string> files_of_objects_;  // of a folder, by kind and name
  std::set<std::string> names_;                                                  // of databases
  std::deque<std::string> unqualified_;  // creation texts that a database was cut out of
  TStructureScript structure_;
  std::vector<TOtherObject> others_;
  std::multimap<std::string, std::string> triggers_on_;  // names, by their tables
};

}  // namespace velmora
