// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The options of a command that say how its databases are reached.

#include <map>
#include <memory>
#include <string>

#include "app/Sources.h"
#include "cli/Console.h"

namespace CLI {  // NOLINT(readability-identifier-naming): the library named it
class App;
}

namespace velmora {

class TSourceOptions {
 public:
  void DeclareOne(CLI::App& app);   // --password-file
  void DeclarePair(CLI::App& app);  // one for each side too
  bool verbose() const { return verbose_; }

  TSourceSettings ForOne(TConsole& console) const { return Settings(password_file_, console); }
  TSourceSettings ForReference(TConsole& console) const { return Settings(ReferenceFile(), console); }
  TSourceSettings ForTarget(TConsole& console) const { return Settings(TargetFile(), console); }
  // The same for the sides of a task file: a password file counts before what is stored, and where that is no password
  // the terminal is asked for one once the server has refused the account.
  TSourceSettings ForTaskReference(TConsole& console) const { return TaskSettings(ReferenceFile(), console); }
  TSourceSettings ForTaskTarget(TConsole& console) const { return TaskSettings(TargetFile(), console); }
  // The same for sources that are written to a task file: a password that is not to be had is warned about.
  TSourceSettings ForStoredReference(TConsole& console) const { return StoredSettings(ReferenceFile(), console); }
  TSourceSettings ForStoredTarget(TConsole& console) const { return StoredSettings(TargetFile(), console); }

 private:
  const std::string& ReferenceFile() const;
  const std::string& TargetFile() const;
  TSourceSettings Settings(const std::string& password_file, TConsole& console) const;
  TSourceSettings TaskSettings(const std::string& password_file, TConsole& console) const;
  TSourceSettings StoredSettings(const std::string& password_file, TConsole& console) const;

  std::string password_file_, reference_password_file_, target_password_file_;
  // By file. Each is read once however many sides it is for, since it may be a pipe; shared with the settings' calls.
  std::shared_ptr<std::map<std::string, std::string>> passwords_ =
      std::make_shared<std::map<std::string, std::string>>();
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
