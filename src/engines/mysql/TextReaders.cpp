// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/mysql/TextReaders.h"

#include <algorithm>

#include "mysqlclient/mysqlUtil.h"
#include "util/Errors.h"

namespace velmora {

namespace {

// A login takes as long as this many texts.
constexpr std::size_t kWorthALogin = 500;

}  // namespace

void TTextReaders::Start(TMyConnection& own, const std::function<std::unique_ptr<TMyConnection>()>& another,
                         const TStringList& statements) {
  Stop();
  const auto allowed = static_cast<std::size_t>(std::max(own.Options.Connections, 1));
  const std::size_t wanted = std::min(allowed, statements.size() / kWorthALogin + 1);
  try {
    while (others_.size() + 1 < wanted) others_.push_back(another());
  } catch (const EAbort&) {
    throw;
  } catch (const EVelmora&) {  // a server may allow fewer
  }
  const std::size_t readers = others_.size() + 1;
  std::vector<TStringList> hands(readers);
  for (std::size_t i = 0; i < statements.size(); ++i) {
    const std::size_t reader = i % readers;
    hands[reader].push_back(statements[i]);
    if (reader > 0) dealt_.emplace(statements[i], reader - 1);
  }
  own.ExpectStatements(hands[0], true);
  for (std::size_t i = 0; i < others_.size(); ++i) others_[i]->ExpectStatements(hands[i + 1], true);
}

void TTextReaders::Stop() {
  dealt_.clear();
  others_.clear();
}

void TTextReaders::QueryRow(const std::string& statement, TMyConnection& own, std::vector<TVariant>& row) {
  const auto dealt = dealt_.find(statement);
  if (dealt != dealt_.end()) {
    TMyConnection& other = *others_[dealt->second];
    try {
      MySqlQueryRow(statement, other, row);
      return;
    } catch (const EMySqlException&) {
      if (other.GetConnected()) throw;
    }
  }
  MySqlQueryRow(statement, own, row);
}

}  // namespace velmora
