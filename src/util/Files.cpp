// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <random>
#include <system_error>
#include <utility>
#include <vector>

#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;

constexpr char kEndless[] = "Cannot read %s: more than 1 GB comes out of it, and it is no file";
constexpr std::size_t kMostOfStream = std::size_t{1} << 30;  // pipes and devices may never end
constexpr char kDelimiter = '/';
constexpr char kEveryName[] = "*.*";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::size_t kBlock = 65536;
constexpr int kMaxLinks = 40;
constexpr int kMaxNames = 100;
constexpr unsigned kUsualMode = 0666;
constexpr char kTemporary[] = ".~%08x";
constexpr std::string_view kTemporaryStart = ".~";
constexpr std::size_t kTemporaryDigits = 8;
constexpr time_t kLeftoverAge = time_t{24} * 60 * 60;  // seconds; nobody takes that long to write a file
constexpr char kPlantedLink[] =
    "Cannot write %s: it is a link in a folder that others may write; name the file itself, or another folder";
constexpr char kStrangersPipe[] = "Cannot write %s: it is a pipe of another user";

[[noreturn]] void Fail(const char* pattern, const std::string& path, int error) {
  RaiseError(Format(pattern, path.empty() ? "\"\"" : path, std::generic_category().message(error)));
}
[[noreturn]] void CannotRead(const std::string& path, int error) { Fail("Cannot read %s: %s", ShownPath(path), error); }
[[noreturn]] void CannotWrite(const std::string& path, int error) { Fail("Cannot write %s: %s", path, error); }

// Standard input is not opened anew: that would begin a file from its beginning, and fails for sockets.
int OpenToRead(const std::string& path) {
  if (path == kStandardInput) return fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0);
  return open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
}

// An open file descriptor.
class TDescriptor {
 public:
  explicit TDescriptor(int fd) : fd_(fd) {}
  ~TDescriptor() { Close(); }
  TDescriptor(const TDescriptor&) = delete;
  TDescriptor& operator=(const TDescriptor&) = delete;

  int Get() const { return fd_; }
  bool IsOpen() const { return fd_ >= 0; }
  bool Close() { return fd_ < 0 || close(std::exchange(fd_, -1)) == 0; }  // false on an error, told in errno

 private:
  int fd_;
};

bool WriteAll(int fd, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = write(fd, text.data(), text.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    text.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

// Appends to what `path` names. A regular file that cannot take the whole text is cut back to what it was.
void AppendTo(const std::string& path, std::string_view text, int flags, unsigned mode) {
  TDescriptor file(open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC | O_NOCTTY | flags, mode));
  if (!file.IsOpen()) CannotWrite(path, errno);
  struct stat before {};
  const bool regular = fstat(file.Get(), &before) == 0 && S_ISREG(before.st_mode);
  if (!WriteAll(file.Get(), text)) {
    const int error = errno;
    if (regular && ftruncate(file.Get(), before.st_size) != 0) CannotWrite(path, errno);
    CannotWrite(path, error);
  }
  if (!file.Close()) CannotWrite(path, errno);
}

// Root and we ourselves: nobody else's links, pipes and folders decide where our texts go.
bool IsTrusted(uid_t owner) { return owner == 0 || owner == geteuid(); }

std::string FolderOf(const fs::path& path) { return path.has_parent_path() ? path.parent_path().string() : "."; }

// Whether everybody, or a stranger who owns it, may put names into the folder.
bool IsOpenToOthers(const struct stat& folder) { return !IsTrusted(folder.st_uid) || (folder.st_mode & S_IWOTH) != 0; }

// Whether the link `path` may lead somewhere that another user has chosen. Where only a group may write, our own links
// and root's are taken for what they are.
bool MayBePlanted(const fs::path& path, const struct stat& link) {
  struct stat folder {};
  if (stat(FolderOf(path).c_str(), &folder) != 0) return false;
  return IsOpenToOthers(folder) || ((folder.st_mode & S_IWGRP) != 0 && !IsTrusted(link.st_uid));
}

// One step of the way: where the link `path` leads, nothing where it is none. Stops in front of the links by which the
// system shows open files (/dev/stdout is one): what stands after these belongs to others, who keep it open.
std::optional<fs::path> LinkTarget(const fs::path& path) {
  struct stat info {};
  if (lstat(path.c_str(), &info) != 0 || !S_ISLNK(info.st_mode) || path.string().starts_with("/proc/"))
    return std::nullopt;
  if (MayBePlanted(path, info)) RaiseError(Format(kPlantedLink, path.string()));
  std::error_code error;
  fs::path target = fs::read_symlink(path, error);
  return error ? std::nullopt : std::optional(path.parent_path() / target);
}

// The file that symbolic links lead to, those of its folders too, whether it exists or not. Raises for a link in a
// folder that others may write.
fs::path FollowLinks(const fs::path& path) {
  fs::path way;
  std::vector<fs::path> rest(path.begin(), path.end());
  for (int links = 0; !rest.empty();) {
    const fs::path next = way / rest.front();
    rest.erase(rest.begin());
    const std::optional<fs::path> target = LinkTarget(next);
    if (target && ++links > kMaxLinks) CannotWrite(path.string(), ELOOP);
    if (target) rest.insert(rest.begin(), target->begin(), target->end());
    way = target ? fs::path() : next;
  }
  return way;
}

// Whether it is a file that can be replaced by another one: a regular file, or none yet. Raises for a pipe of
// another user, who would read what we write.
bool IsReplaceable(const fs::path& path) {
  struct stat info {};
  if (lstat(path.c_str(), &info) != 0 || S_ISREG(info.st_mode)) return true;
  if (S_ISFIFO(info.st_mode) && !IsTrusted(info.st_uid)) RaiseError(Format(kStrangersPipe, path.string()));
  return false;
}

bool IsTemporaryName(std::string_view name) {
  return name.starts_with(kTemporaryStart) && name.size() == kTemporaryStart.size() + kTemporaryDigits &&
         name.find_first_not_of("0123456789abcdef", kTemporaryStart.size()) == std::string_view::npos;
}

// New files that killed programs of this user left, last written to before `time`.
void RemoveLeftovers(const fs::path& folder, time_t time) {
  std::error_code error;
  fs::directory_iterator entry(folder, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    if (!IsTemporaryName(entry->path().filename().string())) continue;
    struct stat info {};
    const bool ours = lstat(entry->path().c_str(), &info) == 0 && S_ISREG(info.st_mode) && info.st_uid == geteuid();
    if (ours && info.st_mtime < time) unlink(entry->path().c_str());
  }
}

// A new file beside `target` that takes its place when it is complete, and otherwise goes away.
class TReplacement {
 public:
  TReplacement(fs::path target, unsigned mode) : target_(std::move(target)), mode_(mode) {}
  ~TReplacement() {
    if (!name_.empty()) unlink(name_.c_str());
  }
  TReplacement(const TReplacement&) = delete;
  TReplacement& operator=(const TReplacement&) = delete;

  // Gives the system's error number, 0 when all is well.
  int Write(std::string_view text) {
    struct stat old {};
    const bool exists = stat(target_.c_str(), &old) == 0;
    // A write-protected file stays, though its folder would let us replace it.
    if (exists && faccessat(AT_FDCWD, target_.c_str(), W_OK, AT_EACCESS) != 0) return errno;
    const bool keeps = exists && KeepsOwner(old);
    TDescriptor file(Create(keeps ? 0600 : mode_));
    const bool written = file.IsOpen() && (!keeps || TakeOver(file.Get(), old)) && WriteAll(file.Get(), text) &&
                         fsync(file.Get()) == 0 && TakeTime(file.Get()) && file.Close() && Rename();
    if (!written) return errno;
    RemoveLeftovers(FolderOf(target_), made_at_ - kLeftoverAge);
    return 0;
  }

 private:
  // Whether the new file may go to the owner of the old one. What is meant for its writer alone never does, nor what
  // stands where anybody may have put an old file beforehand.
  bool KeepsOwner(const struct stat& old) const {
    if (old.st_uid == geteuid()) return true;
    struct stat folder {};
    return mode_ == kUsualMode && stat(FolderOf(target_).c_str(), &folder) == 0 && !IsOpenToOthers(folder);
  }

  // A name of fixed length, since that of the target may be as long as names can be; with a "~", so that file lists
  // leave it out.
  int Create(unsigned mode) {
    std::random_device random;
    for (int i = 0; i < kMaxNames; ++i) {
      const std::string name = target_.parent_path() / Format(kTemporary, random());
      const int fd = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
      if (fd >= 0) name_ = name;
      if (fd >= 0 || errno != EEXIST) return fd;
    }
    return -1;
  }

  // Owner, as far as we may, and permissions of the old file, as far as the wanted mode allows them.
  bool TakeOver(int fd, const struct stat& old) const {
    [[maybe_unused]] const int ownerError = fchown(fd, old.st_uid, old.st_gid);
    const mode_t allowed = mode_ == kUsualMode ? 07777U : mode_;
    return fchmod(fd, old.st_mode & allowed) == 0;
  }

  // The clock that counts is that of the file system.
  bool TakeTime(int fd) {
    struct stat info {};
    if (fstat(fd, &info) != 0) return false;
    made_at_ = info.st_mtime;
    return true;
  }

  bool Rename() {
    if (std::rename(name_.c_str(), target_.c_str()) != 0) return false;
    name_.clear();
    // Makes the new name last. The file is written by now, and not every file system lets folders be flushed.
    const TDescriptor descriptor(open(FolderOf(target_).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (descriptor.IsOpen()) fsync(descriptor.Get());
    return true;
  }

  fs::path target_;
  unsigned mode_;
  std::string name_;  // of the new file while it stands beside the target
  time_t made_at_ = 0;
};

// Whether `name` fits `mask`, in which * stands for any characters and ? for one; case ignored.
bool MatchesMask(std::string_view name, std::string_view mask) {
  std::size_t n = 0;
  std::size_t m = 0;
  std::size_t starEnd = std::string_view::npos;  // after the last *, which takes the characters up to starTaken
  std::size_t starTaken = 0;
  while (n < name.size()) {
    if (m < mask.size() && mask[m] == '*') {
      starEnd = ++m;
      starTaken = n;
    } else if (m < mask.size() && mask[m] == '?') {
      n += CharSize(name, n);
      ++m;
    } else if (m < mask.size() && LowerChar(mask[m]) == LowerChar(name[n])) {
      ++n;
      ++m;
    } else if (starEnd != std::string_view::npos) {
      starTaken += CharSize(name, starTaken);
      n = starTaken;
      m = starEnd;
    } else {
      return false;
    }
  }
  return mask.find_first_not_of('*', std::min(m, mask.size())) == std::string_view::npos;
}

bool IsListed(std::string_view name, std::string_view mask) {
  const bool hidden = name.find('~') != std::string_view::npos || name.find_first_not_of('.') == std::string_view::npos;
  return !hidden && (mask == kEveryName || MatchesMask(name, mask));
}

// Case is ignored first, so that a list does not fall into capitals and small letters.
bool ComesBefore(const std::string& a, const std::string& b) {
  const std::string lowerA = LowerText(a);
  const std::string lowerB = LowerText(b);
  return lowerA == lowerB ? a < b : lowerA < lowerB;
}

// Names in `folder` that fit `mask`, in order; none where the folder cannot be read.
TStringList NamesOf(const std::string& folder, std::string_view mask) {
  TStringList names;
  std::error_code error;
  fs::directory_iterator entry(folder.empty() ? "." : folder, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    std::string name = entry->path().filename().string();
    if (IsListed(name, mask)) names.push_back(std::move(name));
  }
  std::sort(names.begin(), names.end(), ComesBefore);
  return names;
}

// `folder` is empty or ends with the delimiter.
void AddFiles(TStringList& list, const std::string& folder, std::string_view mask, bool recurse) {
  for (const std::string& name : NamesOf(folder, mask)) {
    const std::string path = folder + name;
    std::error_code error;
    if (!fs::is_directory(path, error))
      list.push_back(path);
    else if (recurse && !fs::is_symlink(path, error))  // links to folders may run in circles
      AddFiles(list, path + kDelimiter, kEveryName, recurse);
  }
}

}  // namespace

std::string ShownPath(const std::string& path) { return path == kStandardInput ? "standard input" : path; }

std::string ReadFileText(const std::string& path) {
  std::string text = ReadFileBytes(path);
  if (text.starts_with(kByteOrderMark)) text.erase(0, kByteOrderMark.size());
  return text;
}

std::string ReadFileBytes(const std::string& path, std::size_t max) {
  const TDescriptor file(OpenToRead(path));
  if (!file.IsOpen()) CannotRead(path, errno);
  struct stat info {};
  const bool sized = fstat(file.Get(), &info) == 0 && S_ISREG(info.st_mode);
  std::string text;
  std::size_t size = 0;
  // One byte more than the file has, so that the end is met without another block.
  const std::size_t room = sized ? static_cast<std::size_t>(info.st_size) + 1 : kBlock;
  while (size < max) {
    if (text.size() == size) text.resize(std::min(max, size == 0 ? room : size + std::max(size, kBlock)));
    const ssize_t count = read(file.Get(), text.data() + size, text.size() - size);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) CannotRead(path, errno);
    if (count == 0) break;
    size += static_cast<std::size_t>(count);
    if (!sized && size > kMostOfStream) RaiseError(Format(kEndless, ShownPath(path)));
  }
  text.resize(size);
  return text;
}

TFileParts::TFileParts(const std::string& path) : path_(path), file_(OpenToRead(path)) {
  if (file_ < 0) CannotRead(path, errno);
  struct stat info {};
  if (fstat(file_, &info) == 0 && S_ISREG(info.st_mode)) size_ = static_cast<std::size_t>(info.st_size);
}

TFileParts::~TFileParts() { close(file_); }

bool TFileParts::Read(std::string& text, std::size_t count) {
  std::size_t size = text.size();
  const std::size_t wanted = size + count;
  text.resize(wanted);
  while (size < wanted) {
    const ssize_t got = read(file_, text.data() + size, wanted - size);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) CannotRead(path_, errno);
    if (got == 0) break;
    size += static_cast<std::size_t>(got);
  }
  text.resize(size);
  return size == wanted;
}

void WriteFileText(const std::string& path, std::string_view text, bool append, unsigned mode) {
  if (append) return AppendTo(path, text, O_CREAT, mode);
  const fs::path target = FollowLinks(path);
  if (!IsReplaceable(target)) return AppendTo(path, text, 0, mode);
  const int error = TReplacement(target, mode).Write(text);
  if (error != 0) CannotWrite(path, error);
}

std::size_t FindFiles(TStringList& list, const std::string& mask, bool recurse, bool clear) {
  if (clear) list.clear();
  const std::size_t folderSize = LastPos(std::string_view(&kDelimiter, 1), mask);
  AddFiles(list, mask.substr(0, folderSize), std::string_view(mask).substr(folderSize), recurse);
  return list.size();
}

std::string ExeFolder() {
  std::error_code error;
  const fs::path program = fs::read_symlink("/proc/self/exe", error);
  if (error) Fail("Cannot find the folder of the program (%s): %s", "/proc/self/exe", error.value());
  return JoinPath(program.parent_path().string(), "");
}

std::string JoinPath(std::string_view folder, std::string_view name) {
  std::string path(folder);
  if (path.empty()) return std::string(name);
  if (path.back() != kDelimiter) path += kDelimiter;
  if (name.starts_with(kDelimiter)) name.remove_prefix(1);
  return path.append(name);
}

}  // namespace velmora
