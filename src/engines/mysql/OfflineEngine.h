// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "engines/mysql/DBConnMySQL.h"
#include "mysqlclient/OfflineConnection.h"

namespace velmora {

// The MySQL engine over a script of creation texts. It acts as one of a live server in everything that only reads, and
// shows itself by the path as given. Never connected, it is an empty store that ParseDDL may fill: no file is needed
// then, and whatever would ask a server raises "Not connected".
class TDBConnMySQLOffline : public TDBConnMySQL {
 public:
  explicit TDBConnMySQLOffline(std::string path, TScriptChoice choice = {});
  explicit TDBConnMySQLOffline(std::unique_ptr<TOfflineConnection> connection);

  // Raises: what names a server stands for nothing here.
  void SaveParams(const std::string& path, TXMLAccess& store) override;
  TOfflineConnection& GetConnectionObject() override;
  void GetDisplayName(std::string& text) override;

  // A file is read as it stands.
  void PrepareExactTexts(bool /*exact*/ = true) override {}
  std::vector<TOtherObject> OtherObjects() override { return offline_.OtherObjects(); }
  TStringList KindsHidden() override { return {}; }
  TStringList KindsLeftOut() override;
  std::string ServerVersion() override { return {}; }
  const TStructureScript* StructureScript() const override { return &offline_.Structure(); }

 protected:
  std::unique_ptr<TDBConnMySQL> NewEngine() const override;

 private:
  TOfflineConnection& offline_;
};

}  // namespace velmora
