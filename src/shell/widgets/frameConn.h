// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>
#include <memory>

#include "app/Enumerators.h"
#include "persist/EngineTable.h"

class QComboBox;
class QLineEdit;

namespace velmora {

// The fields that describe a connection: a page for each kind of engine, of which the one for Engine() is shown.
//
// Its widgets are found by their object names; the pages are made in frameConnPages.cpp.
class TfrConn : public QWidget {
 public:
  // Of no engine, hidden. An empty call in `clients` stands for the usual client.
  explicit TfrConn(TEngineClients clients = {}, QWidget* parent = nullptr, TEnumerators enumerators = {});

  int Engine() const { return engine_; }
  // Resets the fields and shows the page of the engine; 0 hides the frame. Raises "Unhandled engine" for an engine
  // without a page, which is then the frame's engine all the same.
  void SetEngine(int engine);

  // What the fields say, by the keys of the engine table. Raises for an engine that no fields can make, and for a
  // separator that is none.
  TEngineValues Values() const;
  // Shows the MySQL page with these values, those that are not there as standard ones.
  void TakeServer(const TEngineValues& values);
  // Goes to the list of databases and opens it.
  void ChooseDatabase();
  // A new engine from the fields, not connected. Fields are not checked: an empty one reaches the engine as empty.
  // Raises as Values and MakeEngine do.
  std::unique_ptr<TDBConn> CreateConnection() const;

 private:
  void MakeMySQLPage();
  void MakeMoreOfMySQL(QWidget& fold);
  void MakeFolderPage();
  void MakeFilePage();
  void MakeMSSQLPage();
  void MakeTextPage();
  void MakeIBPage();
  void MakeOraclePage();
  void MakeAccessPage();
  void MakeODBCPage();

  void ResetFields();
  void ShowPage(const char* name);
  std::string FieldText(const char* name) const;
  void SetFieldText(const char* name, const std::string& text);
  bool Checked(const char* name) const;
  std::string Separator() const;
  void AddMore(TEngineValues& values) const;  // what the fold of the MySQL page says

  // Lists that are asked for as they open.
  void ListDatabases(QComboBox& list);
  void ListSources(QComboBox& list, const TEnumerator& enumerator);
  void ListOracleServices(QComboBox& list);
  void BrowseFolder(QLineEdit& field);
  void BrowseDatabaseFile(QLineEdit& field);
  void BrowseSystemDatabase(QLineEdit& field);
  static void BrowsePemFile(QLineEdit& field);

  TEngineClients clients_;
  TEnumerators enumerators_;
  int engine_ = kEngineNone;
};

}  // namespace velmora
