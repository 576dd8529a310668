// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/PrivateServer.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <thread>

#include "util/Format.h"

namespace velmora::testing {

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr char kFolderPrefix[] = "velmora-server-";
constexpr auto kPoll = 10ms;
constexpr auto kStartTime = 60s;

[[noreturn]] void Fail(const std::string& message) { throw std::runtime_error("private server: " + message); }

std::string Environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

// A program of a server that was fetched; raises where it was not.
std::string Fetched(const std::string& name, const std::string& program) {
  const std::string cache = Environment("XDG_CACHE_HOME");
  std::string path = (cache.empty() ? Environment("HOME") + "/.cache" : cache) + "/velmora/servers/" + name + program;
  if (access(path.c_str(), X_OK) != 0) Fail(path + " is missing; scripts/fetch-server " + name + " brings it");
  return path;
}

// The server, without any option file.
std::vector<std::string> ServerCommand(const std::string& name) {
  if (!name.empty()) return {Fetched(name, "/server")};
  return {FindProgram("mariadbd", "mariadb-server-core"), "--no-defaults"};
}

// The lock of a file for as long as this lives; other processes wait.
class TFileLock {
 public:
  explicit TFileLock(const std::string& path) : file_(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {
    if (file_ < 0 || flock(file_, LOCK_EX) != 0) Fail("cannot lock " + path);
  }
  ~TFileLock() { close(file_); }
  TFileLock(const TFileLock&) = delete;
  TFileLock& operator=(const TFileLock&) = delete;

 private:
  int file_;
};

// What makes the data of a new server in a folder.
std::vector<std::string> DataMaker(const std::string& name, const std::string& folder) {
  const std::string scratch = fs::path(folder).parent_path();
  if (!name.empty()) return {Fetched(name, "/make-data"), folder, scratch};
  return {FindProgram("mariadb-install-db", "mariadb-server-core"),
          "--no-defaults",
          "--user=" + UserName(),
          "--datadir=" + folder,
          "--tmpdir=" + scratch,
          "--auth-root-authentication-method=normal",
          "--skip-test-db",
          "--innodb-log-file-size=32M"};
}

void MakeData(const std::string& name, const std::string& folder, const std::string& log) {
  fs::remove(log);
  int status = 0;
  if (waitpid(SpawnServer(DataMaker(name, folder), log), &status, 0) < 0 || status != 0)
    Fail("a new server's data could not be made:\n" + FileEnd(log));
}

// A fresh data folder to copy, made once per build folder and version of the server.
std::string DataTemplate(const std::string& name) {
  const std::string server = ServerCommand(name).front();
  struct stat status {};
  if (stat(server.c_str(), &status) != 0) Fail("cannot read " + server);
  const std::string cache = VELMORA_TEST_CACHE;
  const std::string made =
      Format("%s/data-%s%d-%d", cache, name, static_cast<std::int64_t>(status.st_size), status.st_mtime);
  fs::create_directories(cache);
  const TFileLock lock(cache + "/lock");
  if (fs::exists(made)) return made;
  const std::string unfinished = cache + "/unfinished";
  fs::remove_all(unfinished);
  MakeData(name, unfinished, cache + "/install.log");
  fs::rename(unfinished, made);
  return made;
}

// A file that the owner of a folder keeps locked. It has its name only once it is locked.
constexpr char kOwner[] = "/owner";

int LockFolder(const std::string& folder) {
  const std::string unnamed = folder + "/unnamed";
  const int file = open(unnamed.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (file < 0 || flock(file, LOCK_EX | LOCK_NB) != 0) Fail("cannot lock " + unnamed);
  fs::rename(unnamed, folder + kOwner);
  return file;
}

// Removes folders whose test program was killed.
void ClearLeftovers(const fs::path& place) {
  std::error_code ignored;
  for (const fs::directory_entry& entry : fs::directory_iterator(place, ignored)) {
    if (!entry.path().filename().string().starts_with(kFolderPrefix)) continue;
    const int file = open((entry.path().string() + kOwner).c_str(), O_RDWR | O_CLOEXEC);
    if (file < 0) continue;
    if (flock(file, LOCK_EX | LOCK_NB) == 0) fs::remove_all(entry.path(), ignored);
    close(file);
  }
}

// In memory where there is room for it: a server waits for the disk with every table that it makes.
fs::path DataPlace() {
  constexpr std::uintmax_t kRoom = 1ULL << 30;
  const fs::path memory = "/dev/shm";
  std::error_code ignored;
  const fs::space_info space = fs::space(memory, ignored);
  const bool roomy = !ignored && space.available >= kRoom && access(memory.c_str(), W_OK) == 0;
  return roomy ? memory : fs::temp_directory_path();
}

std::string MakeFolder() {
  const fs::path place = DataPlace();
  ClearLeftovers(place);
  std::string folder = place / (std::string(kFolderPrefix) + "XXXXXX");
  if (mkdtemp(folder.data()) == nullptr) Fail("cannot make " + folder);
  return folder;
}

// True when a server that listens at the socket says something.
bool Greets(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof(address.sun_path) - 1);
  const int connection = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  char first = 0;
  const bool greets = connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0 &&
                      read(connection, &first, 1) == 1;
  close(connection);
  return greets;
}

// Options that only one maker's servers take. Both have the same limits, for tests that go beyond them.
constexpr const char* kMariaDbOptions[] = {"--skip-sync-frm", "--innodb-log-file-size=32M",
                                           "--max-recursive-iterations=4294967295"};
constexpr const char* kMySqlOptions[] = {"--skip-log-bin",           "--mysqlx=0",
                                         "--secure-file-priv=",      "--innodb-redo-log-capacity=32M",
                                         "--max-allowed-packet=16M", "--cte-max-recursion-depth=4294967295"};

bool IsMySql(const std::string& name) { return name.starts_with("mysql"); }

}  // namespace

std::string ChosenServer() { return Environment("VELMORA_TEST_SERVER"); }

bool OnMySQL() { return IsMySql(ChosenServer()); }

std::string Numbers(int last) {
  return Format("(with recursive n as (select 1 seq union all select seq + 1 from n where seq < %d) select * from n) n",
                last);
}

std::string UserName() {
  const passwd* user = getpwuid(geteuid());
  if (user == nullptr) Fail("the current user has no name");
  return user->pw_name;
}

int FreePort() {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof(address);
  const int probe = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const bool bound = bind(probe, reinterpret_cast<const sockaddr*>(&address), size) == 0 &&
                     getsockname(probe, reinterpret_cast<sockaddr*>(&address), &size) == 0;
  close(probe);
  if (!bound) Fail("no free port");
  return ntohs(address.sin_port);
}

TPrivateServer::TPrivateServer(std::vector<std::string> options, std::string name)
    : options_(std::move(options)), name_(std::move(name)) {
  const std::string made = DataTemplate(name_);
  folder_ = MakeFolder();
  lock_ = LockFolder(folder_);
  socket_ = folder_ + "/socket";
  try {
    if (socket_.size() >= sizeof(sockaddr_un::sun_path)) Fail("the path is too long for a socket: " + socket_);
    fs::copy(made, folder_ + "/data", fs::copy_options::recursive);
    Start();
  } catch (...) {
    RemoveFolder();
    throw;
  }
}

TPrivateServer::~TPrivateServer() {
  Kill();  // nobody reads its data again, and a clean end takes some servers seconds
  RemoveFolder();
}

void TPrivateServer::RemoveFolder() {
  std::error_code ignored;
  fs::remove_all(folder_, ignored);
  close(lock_);
}

TPrivateServer& TPrivateServer::Shared() {
  static TPrivateServer server;
  return server;
}

void TPrivateServer::Kill() { process_.Kill(); }

void TPrivateServer::Stop() { process_.Stop(); }

void TPrivateServer::Restart() {
  Stop();
  Launch();
  if (!Ready()) Fail("the server did not come back:\n" + LogEnd());
}

// Somebody else may take the port between its choice and its use.
void TPrivateServer::Start() {
  constexpr int kTries = 3;
  for (int i = 0; i < kTries; ++i) {
    port_ = FreePort();
    Launch();
    if (Ready()) return;
  }
  Fail("the server did not start:\n" + LogEnd());
}

void TPrivateServer::Launch() {
  std::vector<std::string> command = ServerCommand(name_);
  const std::string usual[] = {"--user=" + UserName(),         "--datadir=" + folder_ + "/data",
                               "--tmpdir=" + folder_,  // a starting server clears its own of what others left
                               "--socket=" + socket_,          "--port=" + std::to_string(port_),
                               "--bind-address=127.0.0.1",     "--pid-file=" + folder_ + "/pid",
                               "--innodb-flush-method=nosync", "--innodb-flush-log-at-trx-commit=0",
                               "--innodb-buffer-pool-size=32M"};
  command.insert(command.end(), std::begin(usual), std::end(usual));
  if (IsMySql(name_))
    command.insert(command.end(), std::begin(kMySqlOptions), std::end(kMySqlOptions));
  else
    command.insert(command.end(), std::begin(kMariaDbOptions), std::end(kMariaDbOptions));
  command.insert(command.end(), options_.begin(), options_.end());
  fs::remove(socket_);  // a killed server leaves it
  process_.Start(command, folder_ + "/log");
}

bool TPrivateServer::Ready() {
  for (auto waited = 0ms; waited < kStartTime; waited += kPoll) {
    if (Greets(socket_)) return true;
    if (!process_.Running()) return false;
    std::this_thread::sleep_for(kPoll);
  }
  process_.Kill();
  return false;
}

std::string TPrivateServer::LogEnd() const { return FileEnd(folder_ + "/log"); }

}  // namespace velmora::testing
