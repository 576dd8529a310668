// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The commands of the main window as data: name, caption, shortcut, icon, and the list that says when they are enabled.

#include <span>

#include "shell/widgets/Text.h"

namespace velmora {

class TfmMain;

enum class ECommandList {
  acList,  // always enabled
  acTask   // while a task is open
};

struct TCommand {
  const char* name;
  TText caption;
  const char* shortcut;  // null for none
  const char* icon;      // null for none
  ECommandList list;
  void (TfmMain::*handler)();  // null: the command is inert
  TText hint = {};             // what it does, where the caption does not say it
};

std::span<const TCommand> Commands();

}  // namespace velmora
