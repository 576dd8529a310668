// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "mysqlclient/MyConnection.h"
#include "mysqltext/CreationScript.h"

namespace velmora {

// A script of creation texts, or a folder of them, that stands for a server. "show tables" and "show create table" are
// answered as a server would; anything else raises "%s is a script file: ...".
//
// Connecting reads the file, which may be standard input (util/Files.h). It is not read again by a new connection of
// this one, nor by connecting anew, as long as it is the same file with the same size and time of change; of a folder,
// as long as this holds for each of its files.
class TOfflineConnection final : public TMyConnection {
 public:
  explicit TOfflineConnection(std::string path, TScriptChoice choice = {});
  ~TOfflineConnection() override;

  const std::string& Path() const { return path_; }
  std::string Name() const;  // the path, as messages show it
  // Of the file as it was last read; none before that.
  const std::vector<TScriptWarning>& Warnings() const;
  const TStructureScript& Structure() const;
  const std::vector<TOtherObject>& OtherObjects() const;
  // Where a table's creation text begins; of a folder the path is that of one of its files. Line 0 for no such table.
  TScriptPlace PlaceOf(const std::string& table) const;
  // The same of a view, trigger, routine or event: "view", "trigger", ...
  TScriptPlace PlaceOf(const std::string& kind, const std::string& name) const;

  bool GetConnected() const override { return connected_; }
  bool InTransaction() const override { return false; }
  void StartTransaction() override;
  void Commit() override;
  void Rollback() override;
  std::unique_ptr<TMyQuery> NewQuery() override;
  std::unique_ptr<TMyConnection> NewConnection() const override;
  std::unique_ptr<TOfflineConnection> NewOfflineConnection() const;
  // The file is not looked at again, neither by this connection nor by those made of it from here on. Any thread may
  // then make one: what they share does not change.
  void KeepAsRead() { keeps_ = true; }

  // The rows that a server would give. Raises "Not connected", "Table '%s' doesn't exist".
  std::unique_ptr<TDataset> Answer(const std::string& sql) const;
  [[noreturn]] void RefuseStatement() const;  // "Not connected" where that holds

 private:
  struct TLoaded;

  void DoConnect() override;
  void DoDisconnect() override;

  std::string path_;
  TScriptChoice choice_;
  std::shared_ptr<const TLoaded> loaded_;
  bool connected_ = false;
  bool keeps_ = false;
};

}  // namespace velmora
