// SPDX-License-Identifier: GPL-3.0-or-later
#include "persist/UserFolder.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

#include "util/Files.h"

namespace velmora {

namespace {

constexpr char kFolder[] = "velmora";

// The variable's value where it is an absolute path, which it has to be to count.
std::string PathVariable(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr && *value == '/' ? value : "";
}

std::string HomeFolder() {
  std::string home = PathVariable("HOME");
  if (!home.empty()) return home;
  const passwd* user = getpwuid(getuid());
  return user != nullptr && user->pw_dir != nullptr ? user->pw_dir : "";
}

// Below the folder that the variable names, else below the one of the home folder.
std::string OurFolder(const char* variable, const char* in_home) {
  const std::string named = PathVariable(variable);
  if (!named.empty()) return JoinPath(named, kFolder);
  const std::string home = HomeFolder();
  return home.empty() ? "" : JoinPath(JoinPath(home, in_home), kFolder);
}

}  // namespace

std::string UserConfigFolder() { return OurFolder("XDG_CONFIG_HOME", ".config"); }

std::string UserConfigFile(const std::string& name) {
  const std::string folder = UserConfigFolder();
  return folder.empty() ? "" : JoinPath(folder, name);
}

std::string CrashFolder() {
  const std::string folder = OurFolder("XDG_STATE_HOME", ".local/state");
  return folder.empty() ? "" : JoinPath(folder, "crashes");
}

}  // namespace velmora
