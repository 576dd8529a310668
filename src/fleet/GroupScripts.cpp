// SPDX-License-Identifier: GPL-3.0-or-later
#include "fleet/GroupScripts.h"

#include <algorithm>
#include <map>

#include "exact/run/ScriptComment.h"
#include "util/Counted.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kListHead[] =
    "# Scripts that velmora-cli script --targets wrote here. It removes those of groups that are gone.\n";
constexpr std::string_view kPrefix = "group-";
constexpr std::string_view kEnding = ".sql";
constexpr char kPurpose[] = "Makes %s as %s is: %s";
constexpr char kNotOne[] =
    "These targets differ in what does not count, so that nothing here tells whether one is still what this was made "
    "for";

bool IsGroupFile(const std::string& file) {
  if (!file.starts_with(kPrefix) || !file.ends_with(kEnding)) return false;
  const std::string number = file.substr(kPrefix.size(), file.size() - kPrefix.size() - kEnding.size());
  return !number.empty() && number.find_first_not_of("0123456789") == std::string::npos;
}

constexpr TFolderWriter kWriter = {"velmora-scripts.txt", kListHead, "script --targets", "no script --targets",
                                   IsGroupFile};

}  // namespace

TStringList GroupFiles(const TFleet& fleet) {
  TStringList files;
  std::size_t number = 0;
  for (const TFleetGroup& group : fleet.Groups())
    files.push_back(group.findings.statements == 0 ? std::string() : Format("group-%02d.sql", ++number));
  return files;
}

std::string GroupScript(const TFleet& fleet, const TFleetGroup& group, const std::string& reference) {
  std::string text;
  const auto add = [&text](const std::string& line) { text += ScriptComment(line) + "\r\n"; };
  add(Format(kPurpose, Counted(group.targets.size(), "database"), reference,
             Counted(group.findings.changes, "change")));
  if (group.same_structure)
    text += group.findings.structure;
  else
    add(kNotOne);
  for (const std::size_t target : group.targets) add("target: " + fleet.Targets()[target].name);
  return text + group.findings.script;
}

TOwnFolder GroupFolder(const std::string& folder) { return {folder, kWriter}; }

TFolderChanges WriteGroups(const TFleet& fleet, const std::string& reference, TOwnFolder& folder) {
  std::map<std::string, std::string> files;
  const TStringList names = GroupFiles(fleet);
  for (std::size_t i = 0; i < names.size(); ++i)
    if (!names[i].empty()) files[names[i]] = GroupScript(fleet, fleet.Groups()[i], reference);
  TFolderChanges changes;
  folder.Write(files, {}, changes);
  return changes;
}

}  // namespace velmora
