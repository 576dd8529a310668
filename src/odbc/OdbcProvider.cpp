// SPDX-License-Identifier: GPL-3.0-or-later
#include "odbc/OdbcProvider.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <type_traits>
#include <utility>

#include "odbc/OdbcCatalog.h"
#include "odbc/OdbcHandles.h"
#include "odbc/OdbcRows.h"
#include "odbc/OdbcStatements.h"
#include "odbc/OdbcStrings.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kNotConnected[] = "Not connected";
constexpr char kNoSource[] =
    "%s\nThere is no data source \"%s\" in odbc.ini; \"odbcinst -j\" tells which files are read";
constexpr char kNoDriver[] = "%s (the ODBC driver for SQL Server is missing: install the package tdsodbc)";
constexpr char kNoTicket[] =
    "%s\nWindows authentication goes by Kerberos here. It needs a ticket (kinit), and the full name of the server.";
constexpr char kNoRows[] = "The statement gives no rows";
constexpr char kOnlyReadCommitted[] = "No transaction of isolation level %d can be started";
constexpr std::uint32_t kReadCommittedLevel = 4096;
constexpr int kMostResults = 10000;  // of one statement; a driver might never come to an end

constexpr std::string_view kUnknownSource = "IM002";
constexpr std::string_view kNoLibrary = "Can't open lib";

// What the two providers have in common: all but the way in and the statements.
class TOdbcProvider : public TOLEDBProvider {
 public:
  void Initialize() override {
    auto connection = std::make_unique<TOdbcConnection>();
    Login(*connection);
    connection_ = std::move(connection);
  }
  void Uninitialize() override { connection_.reset(); }
  bool Initialized() const override { return connection_ != nullptr; }

  TStringList Catalogs() override {
    return Guarded([](TOdbcConnection& connection) { return OdbcCatalogs(connection); });
  }
  std::vector<TOLEDBTableRow> Tables() override {
    return Guarded([](TOdbcConnection& connection) { return OdbcTables(connection); });
  }
  std::vector<TOLEDBColumnRow> Columns(const std::string& table) override {
    return Guarded([&](TOdbcConnection& connection) { return OdbcColumns(connection, table); });
  }
  std::vector<TOLEDBIndexRow> Indexes(const std::string& table) override {
    return Guarded([&](TOdbcConnection& connection) { return OdbcIndexes(connection, table); });
  }

  TOLEDBRowset CatalogRows(ECatalogRows kind, const std::string& table) override {
    return Guarded([&](TOdbcConnection& connection) { return OdbcCatalogRows(connection, kind, table); });
  }

  TOLEDBRowset Open(const std::string& sql) override {
    return Guarded([&](TOdbcConnection& connection) {
      const TOdbcCommand command = CommandOf(sql, connection);
      TOdbcStatement statement(connection);
      if (command.limit > 0) statement.SetMostRows(command.limit);
      statement.Execute(command.sql);
      for (int i = 0; statement.ColumnCount() == 0; ++i)
        if (i == kMostResults || !statement.NextResult()) RaiseError(kNoRows);
      return FetchOdbcRowset(statement, command.limit);
    });
  }

  std::int64_t Execute(const std::string& sql) override {
    return Guarded([&](TOdbcConnection& connection) {
      TOdbcStatement statement(connection);
      statement.Execute(CommandOf(sql, connection).sql);
      std::int64_t affected = statement.Affected();
      // Errors of the later statements of a batch come with their results.
      for (int i = 0; i < kMostResults && statement.NextResult(); ++i) affected += statement.Affected();
      return affected;
    });
  }

  void StartTransaction(std::uint32_t isolation) override {
    if (isolation != kReadCommittedLevel) RaiseError(Format(kOnlyReadCommitted, isolation));
    Guarded([](TOdbcConnection& connection) { connection.StartTransaction(); });
  }
  void Commit() override {
    Guarded([](TOdbcConnection& connection) { connection.Commit(); });
  }

 protected:
  explicit TOdbcProvider(TInitString properties) : properties_(std::move(properties)) {}

  virtual void Login(TOdbcConnection& connection) = 0;
  virtual TOdbcCommand CommandOf(const std::string& sql, const TOdbcConnection& connection) = 0;

  const TInitString& Properties() const { return properties_; }

 private:
  // Closes a connection that has nobody at its other end any more, so that it can be opened anew.
  template <class Body>
  std::invoke_result_t<Body, TOdbcConnection&> Guarded(Body body) {
    if (!connection_) RaiseError(kNotConnected);
    try {
      return body(*connection_);
    } catch (const EOdbcError& error) {
      constexpr std::string_view kConnectionErrors = "08";
      if (error.State().starts_with(kConnectionErrors) || connection_->IsLost()) connection_.reset();
      throw;
    }
  }

  TInitString properties_;
  std::unique_ptr<TOdbcConnection> connection_;
};

class TMsdasqlProvider final : public TOdbcProvider {
 public:
  explicit TMsdasqlProvider(TInitString properties) : TOdbcProvider(std::move(properties)) {}

 private:
  void Login(TOdbcConnection& connection) override {
    const std::string source = Properties().Value("Data Source");
    if (const auto seconds = LoginTimeout(Properties())) connection.SetLoginTimeout(*seconds);
    try {
      connection.OpenSource(source, Properties().Value("User ID"), Properties().Value("Password"));
    } catch (const EOdbcError& error) {
      if (error.State() == kUnknownSource) RaiseError(Format(kNoSource, error.what(), source));
      throw;
    }
  }

  TOdbcCommand CommandOf(const std::string& sql, const TOdbcConnection& connection) override {
    return AdaptStatement(sql, connection.Info(SQL_IDENTIFIER_QUOTE_CHAR));
  }
};

class TSQLServerProvider final : public TOdbcProvider {
 public:
  explicit TSQLServerProvider(TInitString properties) : TOdbcProvider(std::move(properties)) {}

 private:
  void Login(TOdbcConnection& connection) override {
    if (const auto seconds = LoginTimeout(Properties())) connection.SetLoginTimeout(*seconds);
    try {
      connection.OpenBy(FreeTdsString(Properties()));
    } catch (const EOdbcError& error) {
      const std::string_view text = error.what();
      const bool missing = error.State() == kUnknownSource || text.find(kNoLibrary) != std::string_view::npos;
      if (missing) RaiseError(Format(kNoDriver, text));
      const std::string message = FromLatin1(text);  // until the login is done
      RaiseError(IsWindowsLogin(Properties()) ? Format(kNoTicket, message) : message);
    }
  }

  TOdbcCommand CommandOf(const std::string& sql, const TOdbcConnection& /*connection*/) override { return {sql}; }
};

}  // namespace

std::unique_ptr<TOLEDBProvider> NewOdbcProvider(const TInitString& properties) {
  return std::make_unique<TMsdasqlProvider>(properties);
}

std::unique_ptr<TOLEDBProvider> NewSQLServerProvider(const TInitString& properties) {
  return std::make_unique<TSQLServerProvider>(properties);
}

std::unique_ptr<TDataset> OdbcDataSources() {
  constexpr std::int64_t kDataSourceType = 1;  // DBSOURCETYPE_DATASOURCE
  auto sources = std::make_unique<TMemDataset>(std::vector<TFieldDef>{
      {"SOURCES_NAME"}, {"SOURCES_PARSENAME"}, {"SOURCES_DESCRIPTION"}, {"SOURCES_TYPE", EFieldKind::Integer}});
  const TOdbcEnvironment environment;
  for (const TOdbcSource& source : OdbcSources(environment))
    sources->AddRow({source.name, source.name, source.description, kDataSourceType});
  return sources;
}

}  // namespace velmora
