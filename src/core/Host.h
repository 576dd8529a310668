// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The port to whoever stands around the library: a desktop, a terminal, a test. The roof sets one; until then, and
// without windows, every question is answered no or Cancel, nothing is opened, and the message pump does nothing.

#include <string>
#include <string_view>

namespace velmora {

class THost {
 public:
  virtual ~THost() = default;
  virtual void ProcessMessages() {}  // lets pending window messages run
  // The user has asked to end what is under way: an error that comes now comes of that.
  virtual bool Cancelling() const { return false; }
  virtual bool ConfirmOk(const std::string& /*message*/) { return false; }   // OK and Cancel
  virtual bool ConfirmYes(const std::string& /*message*/) { return false; }  // Yes and No
  // Filters are pairs of caption and masks, as in "Text file|*.txt". False: nothing was chosen, `path` is as it was.
  virtual bool OpenFile(const std::string& /*filter*/, std::string& /*path*/) { return false; }
  virtual bool SaveFile(const std::string& /*filter*/, std::string& /*path*/) { return false; }
  virtual bool BrowseFolder(const std::string& /*title*/, std::string& /*folder*/) { return false; }
  // Opens a document, a program or an address with what the system has for it; with `wait` until that ends.
  virtual void ShellOpen(const std::string& /*target*/, const std::string& /*parameters*/ = {},
                         const std::string& /*folder*/ = {}, bool /*wait*/ = false) {}
};

THost& Host();

// Makes `host` the one that Host() gives; the former one comes back when the guard ends.
class THostGuard {
 public:
  explicit THostGuard(THost& host);
  ~THostGuard();
  THostGuard(const THostGuard&) = delete;
  THostGuard& operator=(const THostGuard&) = delete;

 private:
  THost* former_;
};

bool ConfirmYes(const std::string& message);
std::string BrowseFolder(const std::string& title, const std::string& start);  // empty when nothing was chosen
// ShellOpen of the address, "http://" put before it when it holds no "://".
void OpenURL(std::string_view address);

}  // namespace velmora
