#include "engines/mysql/OfflineEngine.h"

#include <utility>

namespace velmora {

TDBConnMySQLOffline::TDBConnMySQLOffline(std::string path)
    : TDBConnMySQLOffline(std::make_unique<TOfflineConnection>(std::move(path))) {}

TDBConnMySQLOffline::TDBConnMySQLOffline(std::unique_ptr<TOfflineConnection> connection)
    : TDBConnMySQL(std::move(connection), {}, 3306, {}, {}, {}),
      offline_(static_cast<TOfflineConnection&>(TDBConnMySQL::GetConnectionObject())) {}

TOfflineConnection& TDBConnMySQLOffline::GetConnectionObject() { return offline_; }

void TDBConnMySQLOffline::GetDisplayName(std::string& text) { text = offline_.Path(); }

std::unique_ptr<TDBConnMySQL> TDBConnMySQLOffline::NewEngine() const {
  return std::make_unique<TDBConnMySQLOffline>(offline_.NewOfflineConnection());
}

}  // namespace velmora
