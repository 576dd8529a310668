// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/RunSession.h"

#include "mysqltext/KeyText.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

TRunSession::TRunSession(TDBConn& target) : target_(target) {
  const std::unique_ptr<TDataset> rows =
      target.OpenQuery("select @@foreign_key_checks, @@sql_mode, @@collation_connection, @@time_zone");
  const auto value = [&rows](std::size_t column) { return VarToText(rows->Value(column)); };
  statement_ = Format("set foreign_key_checks = %s, sql_mode = %s, collation_connection = %s, time_zone = %s", value(0),
                      QuotedText(value(1)), QuotedText(value(2)), QuotedText(value(3)));
}

void TRunSession::PutBack() {
  if (!target_.GetConnected()) return;
  try {
    target_.ExecSQL("unlock tables");
    target_.ExecSQL(statement_);
  } catch (const EVelmora&) {
  }
}

}  // namespace velmora
