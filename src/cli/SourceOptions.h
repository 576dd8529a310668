#pragma once

// The options of a command that say how its databases are reached.

#include <string>

#include "app/Sources.h"
#include "cli/Console.h"

namespace CLI {
class App;
}

namespace velmora {

class TSourceOptions {
 public:
  void DeclareOne(CLI::App& app);   // --password-file
  void DeclarePair(CLI::App& app);  // one for each side too
  bool verbose() const { return verbose_; }
  bool HasPasswordFile() const;

  TSourceSettings ForOne(TConsole& console) const { return Settings(password_file_, console); }
  TSourceSettings ForReference(TConsole& console) const;
  TSourceSettings ForTarget(TConsole& console) const;

 private:
  TSourceSettings Settings(const std::string& password_file, TConsole& console) const;

  std::string password_file_, reference_password_file_, target_password_file_;
  TMyOptions client_;
  bool verbose_ = false;
};

// The first line of the file. Raises with the file's name; never shows what stands in it.
std::string ReadPasswordFile(const std::string& path);

}  // namespace velmora
