// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/SourceOptions.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string_view>
#include <utility>

#include "cli/Command.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

// In the order of the options that have a text or a flag.
constexpr const char* kTextHelp[] = {"Trust the certificates in FILE instead of the system's; means --tls required",
                                     "Show the server our certificate in FILE (PEM)",
                                     "The private key of our certificate, where FILE of --tls-cert does not hold it",
                                     "The local server's socket",
                                     "Without TLS: seal passwords for the server with its public key in FILE (PEM)"};
constexpr const char* kFlagHelp[] = {
    "Without TLS: seal passwords with the key that the server sends, whoever it is",
    "Allow logins that show the server the password itself, or of servers before 4.1 without TLS"};
static_assert(std::size(kTextHelp) == std::size(kMyTextOptions) && std::size(kFlagHelp) == std::size(kMyFlagOptions));
constexpr std::size_t kLongestPassword = 65535;  // bytes
constexpr char kSameAlone[] = "The same as --%s, for the %s alone";
constexpr char kNoPassword[] = "%s: its first line is no password: it has more than %d bytes";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

template <class TField>
std::string Spelt(const TMyOptionName<TField>& option) {
  return std::string("--") + option.name;
}

std::string AskFor(const std::string& account, TConsole& console) {
  return console.AskSecret("Password for " + account + ": ");
}

using TPasswords = std::map<std::string, std::string>;

const std::string& PasswordOf(const std::string& file, TPasswords& passwords) {
  const auto known = passwords.find(file);
  return known != passwords.end() ? known->second : passwords.emplace(file, ReadPasswordFile(file)).first->second;
}

const char* HowToGive(bool has_sides) {
  return has_sides ? "give it by --password-file, or --reference-password-file and --target-password-file"
                   : "give it by --password-file";
}

}  // namespace

std::string ReadPasswordFile(const std::string& path) {
  const std::string text = ReadFileBytes(path, kLongestPassword + 2);
  const std::size_t begin = text.starts_with(kUtf8Mark) ? kUtf8Mark.size() : 0;
  const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
  if (end > kLongestPassword) RaiseError(Format(kNoPassword, path, kLongestPassword));
  return text.substr(begin, end - begin);
}

void TSourceOptions::DeclareOne(CLI::App& app) {
  app_ = &app;
  app.add_option("--password-file", one_.password,
                 "Take the password from the first line of FILE, before one that a task file holds")
      ->type_name("FILE");
  app.add_option("--defaults-file", one_.defaults,
                 "Take from FILE, an option file of MySQL or MariaDB, what a source of a MySQL server leaves out: "
                 "host, port, socket, user, password, certificates")
      ->type_name("FILE");
  DeclareChoice(app, "--tls", TStringList(std::begin(kTlsModes), std::end(kTlsModes)),
                "required: encrypted, and the server's certificate is checked; verify-ca: the same, whatever name it "
                "is for; preferred: encrypted where the server offers it; off",
                [this](std::size_t choice) { client_.Tls = static_cast<ETls>(choice); });
  DeclareChoice(app, "--client", {"native", "library"},
                "native: speak to MySQL servers directly; library: through the MySQL client library",
                [this](std::size_t choice) { client_.Direct = choice == 0; });
  app.add_flag_callback(
      "--no-read-ahead", [this] { client_.ReadAhead = false; },
      "Ask a server for one creation text at a time; the results are the same");
  for (std::size_t i = 0; i < std::size(kMyTextOptions); ++i)
    app.add_option(Spelt(kMyTextOptions[i]), client_.*kMyTextOptions[i].field, kTextHelp[i])->type_name("FILE");
  for (std::size_t i = 0; i < std::size(kMyFlagOptions); ++i)
    app.add_flag(Spelt(kMyFlagOptions[i]), client_.*kMyFlagOptions[i].field, kFlagHelp[i]);
  DeclareNumber(app, "--read-timeout", 0, kLongestReadTimeout,
                "Give a server up that is silent for N seconds in a login or while structure is read; 0 for never "
                "(600). The statements of a script may take any time",
                [this](std::int64_t seconds) { client_.ReadTimeout = static_cast<int>(seconds); });
  DeclareNumber(app, "--connections", 1, kMostConnections,
                "Read the creation texts of many tables by up to N connections a side (1); the results are the same",
                [this](std::int64_t count) { client_.Connections = static_cast<int>(count); });
  app.add_flag("--allow-incomplete", allow_incomplete_, "Read a dump that ends before its closing line");
  app.add_flag("--verbose", verbose_, "Name every statement of a file that is passed over");
}

void TSourceOptions::DeclarePair(CLI::App& app) {
  DeclareOne(app);
  has_sides_ = true;
  for (const auto& [name, files] : {std::pair("reference", &reference_), std::pair("target", &target_)}) {
    app.add_option(Format("--%s-password-file", name), files->password, Format(kSameAlone, "password-file", name))
        ->type_name("FILE");
    app.add_option(Format("--%s-defaults-file", name), files->defaults, Format(kSameAlone, "defaults-file", name))
        ->type_name("FILE");
  }
}

TSourceOptions::TSideFiles TSourceOptions::Joined(const TSideFiles& side) const {
  return {side.password.empty() ? one_.password : side.password, side.defaults.empty() ? one_.defaults : side.defaults};
}

std::map<std::string, std::string> TSourceOptions::Defaults(const std::string& file, TConsole& console) const {
  if (file.empty()) return {};
  const auto known = option_files_->find(file);
  if (known != option_files_->end()) return known->second.values;
  const TOptionFile& read = option_files_->emplace(file, ReadOptionFile(file)).first->second;
  for (const std::string& warning : read.warnings) console.Warn(warning);
  return read.values;
}

TGivenKeys TSourceOptions::GivenKeys() const {
  TGivenKeys given;
  for (const TMyOptionKey& key : kMyOptionKeys) {
    const std::string name = StrReplace(std::string(key.name), "_", "-");
    for (const char* form : {"--%s", "--no-%s"}) {
      const CLI::Option* option = app_->get_option_no_throw(Format(form, name));
      if (option != nullptr && option->count() > 0) given.emplace(key.name);
    }
  }
  return given;
}

TSourceSettings TSourceOptions::Settings(const TSideFiles& files, TConsole& console) const {
  const std::string& password_file = files.password;
  TSourceSettings settings;
  settings.Client = client_;
  settings.Given = GivenKeys();
  settings.AllowIncomplete = allow_incomplete_;
  settings.Defaults = Defaults(files.defaults, console);
  if (!password_file.empty()) settings.Defaults.erase("password");
  const bool unchecked = settings.Given.contains("tls") && client_.Tls < ETls::VerifyCa;
  if (unchecked && !client_.CaFile.empty())
    RaiseError(Format("--tls-ca has nothing to check with --tls %s: give verify-ca or required",
                      kTlsModes[static_cast<std::size_t>(client_.Tls)]));
  settings.Warn = [&console](const std::string& text) { console.Warn(text); };
  settings.AskPassword = [password_file, passwords = passwords_, &console](const std::string& account) {
    return password_file.empty() ? AskFor(account, console) : PasswordOf(password_file, *passwords);
  };
  if (!console.CanAsk() && password_file.empty())
    settings.PasswordRefused = [has_sides = has_sides_, &console](const std::string& account) {
      console.Note(Format("no password was given for %s, and there is no terminal to ask on: %s", account,
                          HowToGive(has_sides)));
      return std::string();
    };
  return settings;
}

TSourceSettings TSourceOptions::TaskSettings(const TSideFiles& files, TConsole& console) const {
  const std::string& password_file = files.password;
  TSourceSettings settings = Settings(files, console);
  if (!password_file.empty())
    settings.TaskPassword = PasswordOf(password_file, *passwords_);
  else if (console.CanAsk())
    settings.PasswordRefused = [&console](const std::string& account) { return AskFor(account, console); };
  return settings;
}

TSourceSettings TSourceOptions::StoredSettings(const TSideFiles& files, TConsole& console) const {
  TSourceSettings settings = Settings(files, console);
  if (!files.password.empty() || console.CanAsk()) return settings;
  settings.AskPassword = [&console](const std::string& account) {
    if (!account.starts_with('@'))  // without a user there is nobody to have a password
      console.Warn(
          Format("no password was given for %s, and there is no terminal to ask on: an empty one is stored; %s",
                 account, HowToGive(true)));
    return std::string();
  };
  return settings;
}

}  // namespace velmora
