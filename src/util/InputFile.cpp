// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/InputFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "util/Aside.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;

constexpr char kLocked[] = "another program has it open for writing";

std::string SystemReason(int error) { return std::generic_category().message(error); }

[[noreturn]] void CannotOpen(const std::string& path, const std::string& reason) {
  RaiseError(Format("Cannot open %s: %s", path, reason));
}

std::string UpperText(std::string_view text) {
  std::string upper(text);
  std::ranges::transform(upper, upper.begin(), [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return upper;
}

}  // namespace

// Without O_NONBLOCK a FIFO of that name would hold us until somebody writes to it.
TInputFile::TInputFile(std::string path, ESharing sharing) : path_(std::move(path)) {
  fd_ = open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
  if (fd_ < 0) CannotOpen(path_, SystemReason(errno));
  struct stat info {};
  std::string fault;
  if (fstat(fd_, &info) != 0)
    fault = SystemReason(errno);
  else if (!S_ISREG(info.st_mode))
    fault = kNoRegularFile;
  else if (sharing == ESharing::DenyWrites && flock(fd_, LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK)
    fault = kLocked;  // any other answer means that this file system has no locks
  if (!fault.empty()) {
    Close();
    CannotOpen(path_, fault);
  }
  size_ = static_cast<std::uint64_t>(info.st_size);
}

void TInputFile::Close() {
  if (fd_ >= 0) close(std::exchange(fd_, -1));
}

std::size_t TInputFile::ReadAt(std::uint64_t offset, std::span<char> buffer) const {
  std::size_t done = 0;
  StopIfLeft();
  while (done < buffer.size()) {
    const ssize_t count = pread(fd_, buffer.data() + done, buffer.size() - done, static_cast<off_t>(offset + done));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) RaiseError(Format("Cannot read %s at offset %d: %s", path_, offset + done, SystemReason(errno)));
    if (count == 0) break;
    done += static_cast<std::size_t>(count);
  }
  return done;
}

const TStringList& TFolderNames::Like(const std::string& folder, std::string_view name) {
  static const TStringList kNone;
  const auto [known, is_new] = folders_.try_emplace(folder);
  auto& names = known->second;
  if (is_new) {
    std::error_code error;
    for (fs::directory_iterator entry(folder, error); !error && entry != fs::directory_iterator();
         entry.increment(error)) {
      std::string found = entry->path().filename().string();
      names[LowerText(found)].push_back(std::move(found));
    }
    for (auto& [lower, spellings] : names) std::ranges::sort(spellings);
  }
  const auto found = names.find(LowerText(name));
  return found == names.end() ? kNone : found->second;
}

// Both usual spellings of an extension are tried before the folder is gone through: folders hold thousands of tables.
std::string FindFileNoCase(std::string_view folder, std::string_view stem, std::string_view extension,
                           TFolderNames* known) {
  const std::string name = std::string(stem) + std::string(extension);
  std::string expected = JoinPath(folder, name);
  std::error_code error;
  for (const std::string& path : {expected, JoinPath(folder, std::string(stem) + UpperText(extension))})
    if (fs::exists(path, error)) return path;
  TFolderNames here;
  const TStringList& names = (known == nullptr ? here : *known).Like(folder.empty() ? "." : std::string(folder), name);
  if (names.empty()) return expected;
  const auto same_stem = std::ranges::find_if(names, [&](const std::string& found) { return found.starts_with(stem); });
  return JoinPath(folder, same_stem == names.end() ? names.front() : *same_stem);
}

}  // namespace velmora
