// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The options of a command that say how its databases are reached.

#include <map>
#include <memory>
#include <string>

#include "app/OptionFile.h"
#include "app/Sources.h"
#include "cli/Console.h"

namespace CLI {  // NOLINT(readability-identifier-naming): the library named it
class App;
}

namespace velmora {

class TSourceOptions {
 public:
  void DeclareOne(CLI::App& app);   // --password-file, --defaults-file
  void DeclarePair(CLI::App& app);  // one for each side too
  bool verbose() const { return verbose_; }

  TSourceSettings ForOne(TConsole& console) const { return Settings(one_, console); }
  TSourceSettings ForReference(TConsole& console) const { return Settings(Reference(), console); }
  TSourceSettings ForTarget(TConsole& console) const { return Settings(Target(), console); }
  // The same for the sides of a task file: a password file counts before what is stored, and where that is no password
  // the terminal is asked for one once the server has refused the account.
  TSourceSettings ForTaskReference(TConsole& console) const { return TaskSettings(Reference(), console); }
  TSourceSettings ForTaskTarget(TConsole& console) const { return TaskSettings(Target(), console); }
  // The same for sources that are written to a task file: a password that is not to be had is warned about.
  TSourceSettings ForStoredReference(TConsole& console) const { return StoredSettings(Reference(), console); }
  TSourceSettings ForStoredTarget(TConsole& console) const { return StoredSettings(Target(), console); }

 private:
  // The files of a side.
  struct TSideFiles {
    std::string password, defaults;  // empty for none
  };
  TSideFiles Reference() const { return Joined(reference_); }
  TSideFiles Target() const { return Joined(target_); }
  TSideFiles Joined(const TSideFiles& side) const;  // what the side itself has counts before that for both
  TSourceSettings Settings(const TSideFiles& files, TConsole& console) const;
  TSourceSettings TaskSettings(const TSideFiles& files, TConsole& console) const;
  TSourceSettings StoredSettings(const TSideFiles& files, TConsole& console) const;
  std::map<std::string, std::string> Defaults(const std::string& file, TConsole& console) const;

  TSideFiles one_, reference_, target_;
  // By file. Each is read once however many sides it is for, since it may be a pipe; shared with the settings' calls.
  std::shared_ptr<std::map<std::string, std::string>> passwords_ =
      std::make_shared<std::map<std::string, std::string>>();
  std::shared_ptr<std::map<std::string, TOptionFile>> option_files_ =
      std::make_shared<std::map<std::string, TOptionFile>>();  // likewise
  TGivenKeys GivenKeys() const;

  TMyOptions client_;
  const CLI::App* app_ = nullptr;  // of the command that the options were declared for
  bool has_sides_ = false;
  bool allow_incomplete_ = false;
  bool verbose_ = false;
};

// The first line of the file. Raises with the file's name; never shows what stands in it.
std::string ReadPasswordFile(const std::string& path);

}  // namespace velmora
