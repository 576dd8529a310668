// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/Journal.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <utility>

#include "cli/Json.h"
#include "exact/run/StructureDigest.h"
#include "util/Dates.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kCannot[] = "Cannot write journal %s: %s";
constexpr char kInUse[] = "The journal %s is used by another run";
constexpr char kDamaged[] =
    "%s: line %d: this is no line of a journal: the file is damaged, or none. Give another file for the journal of a "
    "new run";
constexpr char kForeign[] = "The journal %s is of runs on %s, not on %s. Give another file";
constexpr char kLater[] = "The journal %s was written by a later version of this program. Give another file";
constexpr char kNotKnown[] = "not known";
constexpr int kVersion = 1;
constexpr mode_t kOwnerAlone = 0600;
constexpr double kMilliseconds = 1000;

// The last run as the lines tell it, one after the other.
class TPast {
 public:
  std::string target;
  bool later = false;  // a version wrote it that this one does not know

  void Take(const TJson& line) {
    if (line.contains("run") && line.at("run") == "begins")
      Begin(line);
    else if (line.contains("run"))
      End(line);
    else if (line.at("state") == "begins")
      BeginStatement(line);
    else if (line.at("state") == "tool")
      TakeTool(line, UnderWay());
    else
      EndStatement(line);
  }
  std::optional<TUnfinishedRun> Unfinished() const { return open_ ? std::optional(run_) : std::nullopt; }

 private:
  void Begin(const TJson& line) {
    later = line.at("version") > kVersion;
    target = line.at("target");
    const std::string undo = line.at("undo");
    const bool goes_on = open_ && run_.changed && run_.undo == undo;  // that is of the run before, too
    run_ = {line.at("at"), undo, line.value("end", ""), goes_on, line.at("statements"), 0, {}, {}};
    open_ = true;
  }
  void End(const TJson& line) {
    open_ = line.at("state") != "done";
    if (!line.at("error").is_null()) run_.error = line.at("error");
  }
  void BeginStatement(const TJson& line) {
    run_.under_way = {line.at("statement"), line.at("text"), 0, {}, {}};
    run_.changed = true;
  }
  void EndStatement(const TJson& line) {
    const std::string state = line.at("state");
    if (state == "done") run_.done = line.at("statement");
    if (state != kNotKnown) run_.under_way.reset();  // it may run on where nobody hears of it
  }
  static void TakeTool(const TJson& line, TUnfinishedRun::TUnderWay& statement) {
    statement.process = line.at("process");
    statement.program = line.at("program");
    statement.login = line.value("login", "");
  }
  TUnfinishedRun::TUnderWay& UnderWay() {
    if (!run_.under_way) RaiseError("nothing is under way");
    return *run_.under_way;
  }

  TUnfinishedRun run_;
  bool open_ = false;
};

std::string ErrorOf(const TRunReport& report) {
  return report.failed ? report.runs[*report.failed].words : std::string("the run did not come to its end");
}

}  // namespace

TJournal::TJournal(std::string path, std::string target, const TClock& clock)
    : path_(std::move(path)), target_(std::move(target)), clock_(clock) {
  Open();
  try {
    Read();
    Keep();
  } catch (...) {
    close(file_);
    throw;
  }
}

TJournal::~TJournal() { close(file_); }

void TJournal::Open() {
  const auto fail = [this] { RaiseError(Format(kCannot, path_, std::strerror(errno))); };
  file_ = open(path_.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC | O_NOFOLLOW, kOwnerAlone);
  if (file_ < 0) fail();
  if (flock(file_, LOCK_EX | LOCK_NB) != 0) {
    close(file_);
    RaiseError(Format(kInUse, path_));
  }
  struct stat status {};
  if (fstat(file_, &status) == 0 && S_ISREG(status.st_mode)) return;
  close(file_);
  RaiseError(Format(kCannot, path_, "it is no regular file"));
}

// What turned out to be no journal is left as it is.
void TJournal::Keep() const {
  if (fchmod(file_, kOwnerAlone) != 0) RaiseError(Format(kCannot, path_, std::strerror(errno)));
}

void TJournal::Read() {
  const std::string text = ReadFileText(path_);
  TPast past;
  std::size_t number = 0;
  std::size_t whole = 0;  // bytes of lines that were written to their end
  for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', whole)) {
    ++number;
    try {
      past.Take(TJson::parse(text.substr(whole, end - whole)));
    } catch (const std::exception&) {
      if (!past.later) RaiseError(Format(kDamaged, path_, number));
    }
    if (past.later) RaiseError(Format(kLater, path_));
    whole = end + 1;
  }
  if (number == 0 && !text.empty() && !text.starts_with("{\"run\"")) RaiseError(Format(kDamaged, path_, 1));
  if (number > 0 && past.target != target_) RaiseError(Format(kForeign, path_, past.target, target_));
  if (whole < text.size() && ftruncate(file_, static_cast<off_t>(whole)) != 0)
    RaiseError(Format(kCannot, path_, std::strerror(errno)));
  unfinished_ = past.Unfinished();
}

// A line that cannot be written whole is taken away again: what follows must not stand behind a part of it.
void TJournal::Write(const std::string& line) const {
  const off_t end = lseek(file_, 0, SEEK_END);
  std::size_t written = 0;
  while (written < line.size()) {
    const ssize_t count = write(file_, line.data() + written, line.size() - written);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) {
      const int error = errno;
      [[maybe_unused]] const int cut = ftruncate(file_, end);
      RaiseError(Format(kCannot, path_, std::strerror(error)));
    }
    written += static_cast<std::size_t>(count);
  }
  if (fsync(file_) != 0 && errno != EINVAL) RaiseError(Format(kCannot, path_, std::strerror(errno)));
}

void TJournal::Begin(std::size_t statements) {
  if (begun_) return;
  Write(TextOf({{"run", "begins"},
                {"version", kVersion},
                {"at", DateTimeText(clock_.Now())},
                {"target", target_},
                {"statements", statements},
                {"undo", Undo},
                {"end", End}}));
  begun_ = true;
}

void TJournal::Told(const TRunReport& report) {
  Begin(report.statements.size());
  if (!report.ended) return TellStatements(report);
  try {
    TellStatements(report);
    const bool done = report.committed;
    Write(TextOf({{"run", "ends"},
                  {"state", done               ? "done"
                            : report.cancelled ? "cancelled"
                                               : "failed"},
                  {"in_force", report.InForce()},
                  {"ms", std::llround(report.seconds * kMilliseconds)},
                  {"error", done ? TJson() : TJson(ErrorOf(report))}}));
  } catch (const EVelmora&) {  // the run is over, whatever its journal says
  }
}

void TJournal::TellStatements(const TRunReport& report) {
  const auto line = [&](std::size_t index, const char* state) {
    return TJson{{"statement", index + 1}, {"state", state}, {"hash", TextDigest(report.statements[index].text)}};
  };
  for (std::size_t& i = ended_one_; i < report.runs.size(); ++i) {
    const TStatementRun& run = report.runs[i];
    if (run.state == ERunState::NotRun) return;
    if (i >= begun_one_) {
      TJson begins = line(i, "begins");
      begins["text"] = report.statements[i].text;
      Write(TextOf(begins));
      begun_one_ = i + 1;
    }
    if (run.state == ERunState::Running) return;
    TJson ends = line(i, run.state == ERunState::Done ? "done" : report.lost ? kNotKnown : "failed");
    ends["ms"] = std::llround(run.seconds * kMilliseconds);
    ends["error"] = run.state == ERunState::Done ? TJson() : TJson(run.words);
    Write(TextOf(ends));
  }
}

void TJournal::ToolRuns(int process, const std::string& program, const std::string& login) {
  Write(TextOf(
      {{"statement", begun_one_}, {"state", "tool"}, {"process", process}, {"program", program}, {"login", login}}));
}

}  // namespace velmora
