// SPDX-License-Identifier: GPL-3.0-or-later
#include "crash/CrashReports.h"

#include <cxxabi.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "util/Errors.h"
#include "util/Files.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr std::size_t kLongestReport = 1 << 20;
constexpr char kShownEnding[] = ".shown.txt";

// Names of reports say when they were written, after the name of the program: "velmora-cli-20261122-190145-4711".
std::string TimeOf(const std::string& file) {
  const std::string name = file.substr(file.rfind('/') + 1);
  const std::size_t digit = name.find_first_of("0123456789");
  return digit == std::string::npos ? name : name.substr(digit);
}

TStringList ReportFiles(const std::string& folder, const std::string& mask) {
  TStringList files;
  FindFiles(files, JoinPath(folder, mask), false, true);
  std::ranges::sort(files, std::greater(), TimeOf);
  return files;
}

// "_ZN7velmora4TextEv" as "velmora::Text()".
std::string WithPlainNames(const std::string& text) {
  std::string result;
  std::size_t done = 0;
  for (std::size_t at = text.find("_Z"); at != std::string::npos; at = text.find("_Z", done)) {
    const std::size_t end = std::min(
        text.find_first_not_of("0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ_abcdefghijklmnopqrstuvwxyz", at), text.size());
    const std::string name = text.substr(at, end - at);
    const std::unique_ptr<char, decltype(&std::free)> plain(
        abi::__cxa_demangle(name.c_str(), nullptr, nullptr, nullptr), &std::free);
    result.append(text, done, at - done).append(plain == nullptr ? name : plain.get());
    done = end;
  }
  return result.append(text, done);
}

}  // namespace

std::vector<TCrashReport> NewCrashReports(const std::string& folder) {
  std::vector<TCrashReport> reports;
  for (const std::string& file : ReportFiles(folder, std::string("*") + kCrashReportEnding)) {
    try {
      reports.push_back({file, WithPlainNames(ReadFileBytes(file, kLongestReport))});
    } catch (const EVelmora&) {  // of another user, or just taken away
    }
  }
  return reports;
}

void MarkAsShown(const TCrashReport& report) {
  const std::string beginning = report.file.substr(0, report.file.size() - (sizeof kCrashReportEnding - 1));
  std::rename(report.file.c_str(), (beginning + kShownEnding).c_str());
}

void RemoveOldReports(const std::string& folder) {
  TStringList files = ReportFiles(folder, "*.txt");
  std::stable_partition(files.begin(), files.end(),
                        [](const std::string& file) { return !file.ends_with(kShownEnding); });
  for (std::size_t i = kMostCrashReports; i < files.size(); ++i) std::remove(files[i].c_str());
}

}  // namespace velmora
