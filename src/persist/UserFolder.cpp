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

}  // namespace

std::string UserConfigFolder() {
  const std::string config = PathVariable("XDG_CONFIG_HOME");
  if (!config.empty()) return JoinPath(config, kFolder);
  const std::string home = HomeFolder();
  return home.empty() ? "" : JoinPath(JoinPath(home, ".config"), kFolder);
}

std::string UserConfigFile(const std::string& name) {
  const std::string folder = UserConfigFolder();
  return folder.empty() ? "" : JoinPath(folder, name);
}

}  // namespace velmora
