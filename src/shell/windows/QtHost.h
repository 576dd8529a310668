// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include "core/Host.h"
#include "shell/windows/WindowWait.h"

namespace velmora {

class TfmHelp;

// The desktop as the library's host: message boxes, file dialogs, the system's handlers for documents and addresses.
class TQtHost : public THost {
 public:
  TQtHost();
  ~TQtHost() override;

  // Ends what is under way by ECancelled where the user has asked for that.
  void ProcessMessages() override;
  bool Cancelling() const override { return wait_.Cancelling(); }
  bool ConfirmOk(const std::string& message) override;
  bool ConfirmYes(const std::string& message) override;
  bool OpenFile(const std::string& filter, std::string& path) override;
  // A name without an extension gets that of the filter.
  bool SaveFile(const std::string& filter, std::string& path) override;
  bool BrowseFolder(const std::string& title, std::string& folder) override;
  // "Help.chm" that is not there, or that nothing can open, becomes the help that is built in. A document of another
  // name that cannot be opened raises.
  void ShellOpen(const std::string& target, const std::string& parameters, const std::string& folder,
                 bool wait) override;

  TWindowWait& Wait() { return wait_; }

 protected:
  // Hands an address, a document or a program to the system. False when nothing takes it.
  virtual bool OpenWithSystem(const std::string& target, const std::string& parameters, const std::string& folder,
                              bool wait);

 private:
  void ShowHelp();

  TWindowWait wait_;
  std::unique_ptr<TfmHelp> help_;  // from its first showing on
};

// The masks of a filter such as "MySQL script|*.sql", as Qt's dialogs take them: "MySQL script (*.sql)". Qt's own
// dialogs ignore letter case.
std::string QtFilter(const std::string& filter);
std::string FilterExtension(const std::string& filter);  // "sql"; empty for a mask without one

}  // namespace velmora
