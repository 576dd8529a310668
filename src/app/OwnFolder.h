// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A folder of scripts that a command writes again and again: it has a list of the files that are its own, replaces
// those that change, and removes those that there is nothing for any more. Nobody else's file is touched.

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <string_view>

#include "util/Lists.h"

namespace velmora {

// A name for a file. On disks that take no notice of letter case no two names are one: all but small letters, digits,
// "_" and "-" is written as %XX, and a name that is too long is cut and ends in a digest of the whole.
std::string SafeFileName(const std::string& name);

// Who writes such folders.
struct TFolderWriter {
  std::string_view list;                    // the name of the list
  std::string_view head;                    // its first line, a comment that says what it is
  std::string_view who;                     // "an export"
  std::string_view none;                    // "no export"
  bool (*is_own)(const std::string& file);  // whether a name could be one of its files'
};

// Files are told by their names in the folder, with "/" between.
struct TFolderChanges {
  TStringList added;
  TStringList changed;
  TStringList removed;
  std::size_t unchanged = 0;
};

class TOwnFolder {
 public:
  // Raises for what is no folder, for one that holds scripts which its list does not name, and for a list that cannot
  // be. A folder that is not there will be made.
  TOwnFolder(std::string folder, const TFolderWriter& writer);

  const std::set<std::string>& Written() const { return written_; }  // before
  // Writes these texts by the names of their files, each in one step, and removes of what was written before all but
  // these and `kept`. One that is ended meanwhile knows its files the next time.
  void Write(const std::map<std::string, std::string>& files, const std::set<std::string>& kept,
             TFolderChanges& changes);

 private:
  void WriteList(const std::set<std::string>& files) const;
  void WriteOne(const std::string& file, const std::string& text, TFolderChanges& changes) const;
  void Remove(const std::string& file, TFolderChanges& changes) const;

  std::string folder_;
  std::string list_;
  const TFolderWriter& writer_;
  std::set<std::string> written_;
};

}  // namespace velmora
