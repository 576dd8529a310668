// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What the program remembers between runs in the file "Velmora.settings": the main window's place and the recent list.

#include <string>

#include "persist/Options.h"
#include "persist/RecentList.h"

namespace velmora {

enum EWindowState : int { kWindowNormal = 0, kWindowMinimised = 1, kWindowMaximised = 2 };

// Where the main window stands; in pixels.
struct TWindowPlace {
  int state = kWindowNormal;
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;
};

// The settings file: beside the executable, or in the user's configuration folder for a program that lies where
// programs are installed.
std::string SettingsFile();
std::string SettingsFileOf(const std::string& exe_folder, const std::string& installed_folder);

// The file of recent connections, beside the settings.
std::string RecentConnectionsFile(const std::string& settings_file);

// `window` comes with the place that the window has, and leaves with the one that it shall have: maximised, or normal
// with the four values of the file; any other state leaves it alone. Never raises: reading ends in silence at the first
// fault, and what was read up to there counts.
void LoadSettings(const std::string& file, TWindowPlace& window, TRecentList& recent);

// Writes the file, in silence where that fails, and then the options, which raises where that does. Deliberate: the
// four values are written for a normal window only, and a ";" cuts a path.
void SaveSettings(const std::string& file, const TWindowPlace& window, const TRecentList& recent,
                  const TOptions& options, TOptionStore& store);

}  // namespace velmora
