// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/windows/ProgramArguments.h"

#include <algorithm>
#include <filesystem>
#include <string_view>

#include "util/Format.h"
#include "util/Version.h"

namespace velmora {

namespace {

constexpr char kHelpText[] =
    "Usage: velmora [OPTION...] [FILE]\n"
    "Compares the structure of two databases and makes a MySQL database equal to its reference.\n"
    "FILE is a task file (.vlt), which is opened.\n"
    "\n"
    "Options:\n"
    "  -h, --help     Print this help and end\n"
    "  --version      Print the version and end\n"
    "  -platform, -style and the other options of Qt's programs\n"
    "\n"
    "velmora-cli is the same for terminals.\n";
constexpr char kNoOption[] = "velmora: %s is no option (--help tells more)\n";
constexpr char kTwoFiles[] = "velmora: one task file at a time can be opened (--help tells more)\n";
constexpr int kMisused = 2;
constexpr std::string_view kEndOfOptions = "--";

// By which it is found again from the list of recent ones, wherever the program is started then.
std::string WholePath(const std::string& file) {
  std::error_code failed;
  const std::filesystem::path whole = std::filesystem::absolute(file, failed);
  return failed ? file : whole.lexically_normal().string();
}

// The task file, or the first fault.
TProgramArguments ReadFile(const TStringList& arguments) {
  TProgramArguments read;
  bool options = true;
  for (const std::string& argument : arguments) {
    if (argument.empty()) continue;  // what an entry of a menu may leave where there is no file
    if (options && argument == kEndOfOptions)
      options = false;
    else if (options && argument.front() == '-')
      return {{}, Format(kNoOption, argument), kMisused};
    else if (!read.task_file.empty())
      return {{}, kTwoFiles, kMisused};
    else
      read.task_file = WholePath(argument);
  }
  return read;
}

}  // namespace

TProgramArguments ReadProgramArguments(const TStringList& arguments) {
  const auto options_end = std::ranges::find(arguments, kEndOfOptions);
  for (auto argument = arguments.begin(); argument != options_end; ++argument) {
    if (*argument == "-h" || *argument == "--help") return {{}, kHelpText, 0};
    if (*argument == "--version") return {{}, "velmora " + VersionText() + "\n", 0};
  }
  return ReadFile(arguments);
}

}  // namespace velmora
