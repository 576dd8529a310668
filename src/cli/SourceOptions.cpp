#include "cli/SourceOptions.h"

#include <CLI/CLI.hpp>

#include "cli/Command.h"
#include "util/Files.h"

namespace velmora {

std::string ReadPasswordFile(const std::string& path) {
  const std::string text = ReadFileText(path);
  return text.substr(0, text.find_first_of("\r\n"));
}

void TSourceOptions::DeclareOne(CLI::App& app) {
  app.add_option("--password-file", password_file_, "Take the password from the first line of FILE")->type_name("FILE");
  DeclareChoice(app, "--tls", {"off", "preferred", "required"},
                "required: encrypted, and the server's certificate is checked; preferred: encrypted where the server "
                "offers it; off",
                [this](std::size_t choice) { client_.Tls = static_cast<ETls>(choice); });
  app.add_option("--tls-ca", client_.CaFile, "Trust the certificates in FILE instead of the system's")
      ->type_name("FILE");
  app.add_option("--socket", client_.Socket, "The local server's socket")->type_name("FILE");
  app.add_flag("--verbose", verbose_, "Name every statement of a file that is passed over");
}

void TSourceOptions::DeclarePair(CLI::App& app) {
  DeclareOne(app);
  app.add_option("--reference-password-file", reference_password_file_, "The same for the reference alone")
      ->type_name("FILE");
  app.add_option("--target-password-file", target_password_file_, "The same for the target alone")->type_name("FILE");
}

bool TSourceOptions::HasPasswordFile() const {
  return !password_file_.empty() || !reference_password_file_.empty() || !target_password_file_.empty();
}

TSourceSettings TSourceOptions::ForReference(TConsole& console) const {
  return Settings(reference_password_file_.empty() ? password_file_ : reference_password_file_, console);
}

TSourceSettings TSourceOptions::ForTarget(TConsole& console) const {
  return Settings(target_password_file_.empty() ? password_file_ : target_password_file_, console);
}

TSourceSettings TSourceOptions::Settings(const std::string& password_file, TConsole& console) const {
  TSourceSettings settings;
  settings.Client = client_;
  settings.Warn = [&console](const std::string& text) { console.Warn(text); };
  settings.AskPassword = [password_file, &console](const std::string& account) {
    return password_file.empty() ? console.AskSecret("Password for " + account + ": ")
                                 : ReadPasswordFile(password_file);
  };
  return settings;
}

}  // namespace velmora
