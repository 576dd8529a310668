// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/CopyTool.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): for kill
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <utility>
#include <vector>

#include "core/Host.h"
#include "exact/run/TableSizes.h"
#include "mysqlclient/MyConnection.h"
#include "mysqltext/KeyText.h"
#include "mysqltext/Lexer.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNoWords[] = "a command is needed";
constexpr char kOpenQuote[] = "a quote is not closed";
constexpr char kMissing[] = "%s is not in it";
constexpr char kNoProgram[] = "there is no program %s";
constexpr char kNotStarted[] = "%s cannot be started: %s";
constexpr char kFailed[] = "%s ended with %s; its last lines:\n%s";
constexpr char kSaidNothing[] = "%s ended with %s, and said nothing";
constexpr char kHiddenWord[] = "(hidden)";
constexpr char kNames[] =
    "table %s is changed by the server itself: the statement is of constraints or partitions, too";
constexpr char kNoConnection[] = "A tool for large tables needs a target on a server";
constexpr std::size_t kKeptBytes = 4000;  // of what it says
constexpr int kPulse = 100;               // milliseconds
constexpr auto kGrace = std::chrono::seconds(30);
constexpr auto kIdle = std::chrono::seconds(20);  // of the target's session, which servers end after a while

// As a shell does with quotes and backslashes, and with nothing else.
std::optional<TStringList> ShellWords(const std::string& command) {
  TStringList words;
  std::string word;
  bool in_word = false;
  char quote = 0;
  for (std::size_t i = 0; i < command.size(); ++i) {
    const char c = command[i];
    const bool escapes = c == '\\' && i + 1 < command.size() &&
                         (quote == 0 || (quote == '"' && (command[i + 1] == '"' || command[i + 1] == '\\')));
    if (quote == 0 && (c == ' ' || c == '\t' || c == '\n')) {
      if (in_word) words.push_back(std::exchange(word, {}));
      in_word = false;
      continue;
    }
    in_word = true;
    if (escapes)
      word += command[++i];
    else if (quote == 0 && (c == '\'' || c == '"'))
      quote = c;
    else if (c == quote)
      quote = 0;
    else
      word += c;
  }
  if (in_word) words.push_back(word);
  return quote == 0 ? std::optional(words) : std::nullopt;
}

bool CanBeStarted(const std::string& file) {
  struct stat status = {};
  return stat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode) && access(file.c_str(), X_OK) == 0;
}

// By its path, or in one of the folders that the system looks in.
bool IsProgram(const std::string& name) {
  if (name.find('/') != std::string::npos) return CanBeStarted(name);
  const char* path = std::getenv("PATH");
  TStringList folders;
  SplitPlain(':', path == nullptr ? "/bin:/usr/bin" : path, folders);
  return std::ranges::any_of(folders,
                             [&name](const std::string& folder) { return CanBeStarted(JoinPath(folder, name)); });
}

using TFillings = std::vector<std::pair<std::string_view, std::string>>;

// What is filled in is not looked at again.
std::string Filled(std::string_view word, const TFillings& fillings) {
  std::string text;
  while (!word.empty()) {
    const auto found =
        std::ranges::find_if(fillings, [&](const auto& filling) { return word.starts_with(filling.first); });
    text += found == fillings.end() ? std::string(1, word.front()) : found->second;
    word.remove_prefix(found == fillings.end() ? 1 : found->first.size());
  }
  return text;
}

// "alter table `t` CLAUSES"; the table is empty for anything else.
struct TAlteration {
  std::string table;
  std::string clauses;
  std::vector<TToken> tokens;  // of the clauses
};

TAlteration ReadAlteration(const std::string& statement) {
  TAlteration result;
  const std::vector<TToken> tokens = Tokens(statement);
  if (!tokens[0].Is("alter") || !TokenAt(tokens, 1).Is("table") || !IsName(TokenAt(tokens, 2))) return result;
  if (TokenAt(tokens, 3).text == ".") return result;
  result.table = NameOf(TokenAt(tokens, 2));
  result.clauses = Trim(statement.substr(TokenAt(tokens, 2).End()));
  result.tokens.assign(tokens.begin() + 3, tokens.end());
  return result;
}

// Whether servers of today make a clause that begins so without touching rows.
bool IsLightClause(const TToken* clause, const TToken* end) {
  const auto word = [&](std::ptrdiff_t i) { return i < end - clause ? LowerText(clause[i].text) : std::string(); };
  const bool key = InList(word(1), {"key", "index"});
  if (word(0) == "comment" || word(0) == "rename" || word(0) == "auto_increment") return true;
  if (word(0) == "alter") return true;  // the default of a column, whether a key is seen
  return word(0) == "drop" && key;
}

std::vector<std::pair<std::size_t, std::size_t>> Clauses(const std::vector<TToken>& tokens) {
  std::vector<std::pair<std::size_t, std::size_t>> clauses;
  std::size_t begin = 0;
  int depth = 0;
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    if (tokens[i].text == "(") ++depth;
    if (tokens[i].text == ")") --depth;
    if (tokens[i].text != "," || depth > 0) continue;
    clauses.emplace_back(begin, i);
    begin = i + 1;
  }
  clauses.emplace_back(begin, tokens.size());
  return clauses;
}

bool IsLight(const TAlteration& alteration, ELockClass lock) {
  if (lock != ELockClass::None && lock != ELockClass::Unknown) return lock < ELockClass::Rebuild;
  for (const auto& [begin, end] : Clauses(alteration.tokens))
    if (!IsLightClause(alteration.tokens.data() + begin, alteration.tokens.data() + end)) return false;
  return true;
}

bool NamesConstraint(const std::vector<TToken>& tokens) {
  for (const TToken& token : tokens)
    if (token.Is("constraint") || token.Is("foreign") || token.Is("check") || token.Is("references") ||
        token.Is("partition") || token.Is("algorithm"))
      return true;
  return false;
}

std::string OptionValueText(const std::string& value) {
  std::string quoted;
  for (const char c : value) {
    if (c == '"' || c == '\\' || c == '\n' || c == '\r') quoted += '\\';
    quoted += c == '\n' ? 'n' : c == '\r' ? 'r' : c;
  }
  return quoted;
}

std::string OptionLine(const char* option, const std::string& value) {
  return value.empty() ? std::string() : Format("%s=\"%s\"\n", option, OptionValueText(value));
}

// A demand in the words of both makers: client libraries skip what they do not know, and command-line clients refuse
// it, which is better than a line that others may read.
std::string TlsLines(const TMyOptions& options) {
  std::string text = OptionLine("ssl-ca", options.CaFile);
  text += OptionLine("ssl-cert", options.CertFile);
  text += OptionLine("ssl-key", options.KeyFile);
  if (options.Tls != ETls::VerifyCa && options.Tls != ETls::Required) return text;
  text += OptionLine("ssl-mode", options.Tls == ETls::Required ? "VERIFY_IDENTITY" : "VERIFY_CA");
  return text + OptionLine("ssl-verify-server-cert", "1");
}

std::string PasswordOf(const TMyConnection& connection) {
  const bool late = connection.Password.empty() && connection.LatePassword != nullptr;
  return late ? connection.LatePassword->Known() : connection.Password;
}

std::string LoginText(const TMyConnection& connection) {
  const std::string at = connection.ReachedAt();
  const std::size_t colon = at.rfind(':');
  const bool socket = at.starts_with('/');
  std::string text = "[client]\n";
  text += OptionLine("user", connection.Username);
  text += OptionLine("password", PasswordOf(connection));
  text += OptionLine("socket", socket ? at : std::string());
  text += OptionLine("host", socket ? std::string() : at.substr(0, colon));
  text += OptionLine("port", socket || colon == std::string::npos ? std::string() : at.substr(colon + 1));
  return text + TlsLines(connection.Options);
}

// A file for its owner alone, gone with this object.
class TLoginFile {
 public:
  explicit TLoginFile(const TMyConnection& connection) {
    const char* folder = std::getenv("TMPDIR");
    path_ = JoinPath(folder == nullptr || *folder == 0 ? "/tmp" : folder, std::string(kLoginFileStart) + "XXXXXX");
    const int file = mkostemp(path_.data(), O_CLOEXEC);  // 0600
    if (file < 0) RaiseError(Format("Cannot write %s: %s", path_, std::strerror(errno)));
    const std::string text = LoginText(connection);
    const bool written = write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    close(file);
    if (written) return;
    unlink(path_.c_str());
    RaiseError(Format("Cannot write %s: %s", path_, std::strerror(errno)));
  }
  ~TLoginFile() { unlink(path_.c_str()); }
  TLoginFile(const TLoginFile&) = delete;
  TLoginFile& operator=(const TLoginFile&) = delete;
  const std::string& Path() const { return path_; }

 private:
  std::string path_;
};

// The tool at work: what it says comes through a pipe, and goes on without the password.
class TToolProcess {
 public:
  TToolProcess(TStringList words, std::string password) : name_(words.front()), password_(std::move(password)) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) RaiseError(Format(kNotStarted, name_, std::strerror(errno)));
    pipe_ = ends[0];
    const int error = Start(words, ends[1]);
    close(ends[1]);
    if (error == 0) return;
    close(pipe_);
    RaiseError(Format(kNotStarted, name_, std::strerror(error)));
  }
  ~TToolProcess() {
    if (process_ > 0) End();
    close(pipe_);
  }
  TToolProcess(const TToolProcess&) = delete;
  TToolProcess& operator=(const TToolProcess&) = delete;

  int Id() const { return process_; }

  // `keep_alive` is called now and then.
  void Wait(const std::function<void()>& keep_alive) {
    auto next = std::chrono::steady_clock::now() + kIdle;
    while (!Ended()) {
      Host().ProcessMessages();
      Read(kPulse);
      if (std::chrono::steady_clock::now() < next) continue;
      keep_alive();
      next = std::chrono::steady_clock::now() + kIdle;
    }
    Read(0);
    if (status_ == 0) return;
    const std::string how =
        WIFSIGNALED(status_) ? Format("signal %d", WTERMSIG(status_)) : Format("status %d", WEXITSTATUS(status_));
    const std::string said = LastLines();
    RaiseError(said.empty() ? Format(kSaidNothing, name_, how) : Format(kFailed, name_, how, said));
  }

 private:
  int Start(TStringList& words, int output) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output, STDERR_FILENO);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none, usual;
    sigemptyset(&none);
    sigemptyset(&usual);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) sigaddset(&usual, signal);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &usual);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    const int error = posix_spawnp(&process_, arguments[0], &actions, &attributes, arguments.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) process_ = 0;
    return error;
  }

  bool Ended() {
    if (process_ > 0 && waitpid(process_, &status_, WNOHANG) == process_) process_ = 0;
    return process_ == 0;
  }

  // What has come, or comes in so many milliseconds.
  void Read(int patience) {
    for (pollfd ready{pipe_, POLLIN, 0}; poll(&ready, 1, patience) > 0; patience = 0) {
      std::array<char, 4096> bytes;
      const ssize_t count = read(pipe_, bytes.data(), bytes.size());
      if (count <= 0) {
        if (!Ended()) usleep(kPulse * 1000);
        return;
      }
      said_.append(bytes.data(), static_cast<std::size_t>(count));
      cut_ = cut_ || said_.size() > kKeptBytes;
      if (said_.size() > kKeptBytes) said_.erase(0, said_.size() - kKeptBytes);
    }
  }

  // Where the beginning is cut off, an end of the password might be left of it.
  std::string LastLines() const {
    if (password_.empty()) return Trim(said_);
    const std::string quoted = OptionValueText(password_);
    std::string text = said_.substr(cut_ ? std::min(quoted.size(), said_.size()) : 0);
    for (const std::string& secret : {quoted, password_}) text = StrReplace(text, secret, kHiddenWord);
    return Trim(text);
  }

  // It is to clear away what it has begun.
  void End() {
    kill(-process_, SIGTERM);
    for (const auto end = std::chrono::steady_clock::now() + kGrace;
         !Ended() && std::chrono::steady_clock::now() < end;)
      Read(kPulse);
    if (process_ == 0) return;
    kill(-process_, SIGKILL);
    waitpid(process_, &status_, 0);
  }

  std::string name_;
  std::string password_;
  std::string said_;  // its last bytes
  bool cut_ = false;  // there were others before
  pid_t process_ = 0;
  int pipe_ = -1;
  int status_ = 0;
};

}  // namespace

std::string FaultOfCopyTool(const std::string& command) {
  const std::optional<TStringList> words = ShellWords(command);
  if (!words) return kOpenQuote;
  if (words->empty()) return kNoWords;
  for (const char* needed : {"{TABLE}", "{CLAUSES}"})
    if (command.find(needed) == std::string::npos) return Format(kMissing, needed);
  return IsProgram(words->front()) ? std::string() : Format(kNoProgram, words->front());
}

std::int64_t TCopyToolRuns::SizeOf(const std::string& table) {
  const TTableSizes sizes = AskTableSizes(target_, {table});
  return sizes.empty() ? 0 : sizes.begin()->second.bytes;
}

bool TCopyToolRuns::Takes(const std::string& statement, ELockClass lock) {
  if (care_.copy_tool.command.empty()) return false;
  const TAlteration alteration = ReadAlteration(statement);
  if (alteration.table.empty() || IsLight(alteration, lock)) return false;
  if (SizeOf(alteration.table) < care_.copy_tool.least_size) return false;
  const bool names = NamesConstraint(alteration.tokens);
  if (names && care_.tell) care_.tell(Format(kNames, alteration.table));
  return !names;
}

// A tool that is at work goes on without the session; the statement after it tells that this is lost.
void TCopyToolRuns::KeepAlive() {
  try {
    if (target_.GetConnected()) target_.ExecSQL("do 1");
  } catch (const EMySqlException&) {
  }
}

void TCopyToolRuns::Run(const std::string& statement) {
  auto* connection = dynamic_cast<TMyConnection*>(&target_.GetConnectionObject());
  if (connection == nullptr) RaiseError(kNoConnection);
  const TAlteration alteration = ReadAlteration(statement);
  const TLoginFile login(*connection);
  const TFillings fillings = {{"{DATABASE}", connection->Database},
                              {"{TABLE}", alteration.table},
                              {"{DEFAULTS}", login.Path()},
                              {"{CLAUSES}", alteration.clauses}};
  TStringList words = ShellWords(care_.copy_tool.command).value();
  for (std::string& word : words) word = Filled(word, fillings);
  target_.ExecSQL("commit");  // as a server does before a change of structure: the tool must not wait for us
  TToolProcess tool(words, PasswordOf(*connection));
  if (care_.tool_runs) care_.tool_runs(tool.Id(), words.front(), login.Path());
  tool.Wait([this] { KeepAlive(); });
}

}  // namespace velmora
