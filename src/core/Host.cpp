// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/Host.h"

namespace velmora {
namespace {

// The host of a program without windows, until the roof sets its own.
THost*& CurrentHost() {
  static THost nobody;
  static THost* current = &nobody;
  return current;
}

}  // namespace

THost& Host() { return *CurrentHost(); }

THostGuard::THostGuard(THost& host) : former_(CurrentHost()) { CurrentHost() = &host; }

THostGuard::~THostGuard() { CurrentHost() = former_; }

bool ConfirmYes(const std::string& message) { return Host().ConfirmYes(message); }

std::string BrowseFolder(const std::string& title, const std::string& start) {
  std::string folder = start;
  return Host().BrowseFolder(title, folder) ? folder : std::string();
}

void OpenURL(std::string_view address) {
  const bool has_scheme = address.find("://") != std::string_view::npos;
  Host().ShellOpen((has_scheme ? "" : "http://") + std::string(address));
}

}  // namespace velmora
