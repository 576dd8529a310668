// SPDX-License-Identifier: GPL-3.0-or-later
#include "persist/Settings.h"

#include <exception>
#include <filesystem>

#include "persist/UserFolder.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "xml/XMLAccess.h"

namespace velmora {

namespace {

constexpr char kFile[] = "Velmora.settings";
constexpr char kConnections[] = "Velmora.connections";
constexpr char kState[] = "Window/State";
constexpr char kDocuments[] = "RecentDocuments/Document";
constexpr char kFilename[] = "filename";

struct TPlaceKey {
  const char* key;
  int TWindowPlace::*member;
};
constexpr TPlaceKey kPlaceKeys[] = {{"Window/Left", &TWindowPlace::left},
                                    {"Window/Top", &TWindowPlace::top},
                                    {"Window/Width", &TWindowPlace::width},
                                    {"Window/Height", &TWindowPlace::height}};

void ReadWindow(TWindowPlace& window) {
  const int state = cfgGetInt(kState);
  if (state != kWindowMaximised && state != kWindowNormal) return;
  window.state = state;
  if (state != kWindowNormal) return;
  for (const TPlaceKey& place : kPlaceKeys) window.*place.member = cfgGetInt(place.key);
}

void WriteWindow(const TWindowPlace& window) {
  cfgSetInt(kState, window.state);
  if (window.state != kWindowNormal) return;
  for (const TPlaceKey& place : kPlaceKeys) cfgSetInt(place.key, window.*place.member);
}

bool CanBeStored(const std::string& path) {
  if (path.empty()) return false;
  try {
    TXMLAccess().xmlSetVal("/root/path", path);
    return true;
  } catch (const EVelmora&) {
    return false;
  }
}

// One path that the file cannot hold does not cost the rest.
void WriteRecent(const TRecentList& recent) {
  TStringList list;
  recent.RecentRead(list);
  std::erase_if(list, [](const std::string& path) { return !CanBeStored(path); });
  cfgSetList(kDocuments, list, kFilename);
}

// Whether two names lead to the same folder; an empty one leads nowhere.
bool IsSameFolder(const std::string& a, const std::string& b) {
  std::error_code error;
  return !a.empty() && !b.empty() && std::filesystem::equivalent(a, b, error) && !error;
}

// A fault of the settings must never keep the program from starting or ending.
template <class Body>
void RunInSilence(Body body) {
  try {
    body();
  } catch (const std::exception&) {  // Deliberate: nobody is told
  }
}

}  // namespace

std::string SettingsFile() { return SettingsFileOf(ExeFolder(), VELMORA_BIN_FOLDER); }

std::string SettingsFileOf(const std::string& exe_folder, const std::string& installed_folder) {
  return IsSameFolder(exe_folder, installed_folder) ? UserConfigFile(kFile) : JoinPath(exe_folder, kFile);
}

std::string RecentConnectionsFile(const std::string& settings_file) {
  return (std::filesystem::path(settings_file).parent_path() / kConnections).string();
}

void LoadSettings(const std::string& file, TWindowPlace& window, TRecentList& recent) {
  recent.RecentShow({});
  RunInSilence([&] {
    cfgLoad(file);
    ReadWindow(window);
    TStringList list;
    cfgGetList(kDocuments, kFilename, list);
    recent.RecentShow(list);
  });
}

void SaveSettings(const std::string& file, const TWindowPlace& window, const TRecentList& recent,
                  const TOptions& options, TOptionStore& store) {
  RunInSilence([&] {
    cfgReset();
    WriteWindow(window);
    WriteRecent(recent);
    std::filesystem::create_directories(std::filesystem::path(file).parent_path());
    cfgSave(file);
  });
  SaveOptions(options, store);
}

}  // namespace velmora
