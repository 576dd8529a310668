// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/widgets/frameConn.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QRadioButton>
#include <QSpinBox>
#include <QVBoxLayout>
#include <algorithm>
#include <filesystem>
#include <span>

#include "core/Host.h"
#include "mysqlclient/MyWire.h"
#include "shell/widgets/BusyCursor.h"
#include "shell/widgets/QtText.h"
#include "shell/widgets/Text.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/MySqlFacts.h"

namespace velmora {

namespace {

constexpr char kUnhandledEngine[] = "Unhandled engine";
constexpr char kCannotCreate[] = "TfrConn.CreateConnection: Unhandled engine ";
constexpr char kBadSeparator[] = "Character \" is not an allowed separator.";
constexpr char kSelectFolder[] = "Please select database folder.";
constexpr TText kSocketElsewhere = TText::Later(
    "A local socket leads to a server on this computer: write localhost as the server, or leave the socket empty.");
constexpr char kPemMasks[] = "|*.pem;*.crt;*.cer;*.key";
constexpr char kSystemDatabases[] = "Access system database|*.mdw";

constexpr char kLocalServer[] = "localhost";

// A key of an engine and the field that holds its value.
struct TConnField {
  std::string_view key;
  const char* field;
};

constexpr TConnField kFolder[] = {{"folder", "edFolder"}};
// A further key, given where it is not empty.
constexpr TConnField kCodePage = {"codepage", "edCodePage"};
constexpr TConnField kFile[] = {{"filename", "edFilename"}};
constexpr TConnField kExcel[] = {{"filename", "edFilename"}, {"HDR", "cbFileHDR"}};
constexpr TConnField kInterbase[] = {
    {"server", "cServerIB"}, {"database", "edDBIB"}, {"username", "edUsernameIB"}, {"password", "edPasswordIB"}};
constexpr TConnField kAccess[] = {
    {"filename", "edFileAccess"}, {"password", "edPasswordAccess"}, {"sysdb_filename", "edSysDBAccess"}};
constexpr TConnField kSQLServer[] = {{"server", "cServerMSSQL"},
                                     {"database", "cDBMSSQL"},
                                     {"username", "edUsernameMSSQL"},
                                     {"password", "edPasswordMSSQL"},
                                     {"windows_authentication", "rbWindowsMSSQL"}};
constexpr TConnField kMySQL[] = {{"server", "edServerMySQL"},
                                 {"database", "cDBMySQL"},
                                 {"username", "edUsernameMySQL"},
                                 {"password", "edPasswordMySQL"},
                                 {"port", "edPortMySQL"}};
// Further keys: given where they are not the standard.
constexpr TConnField kMySQLMore[] = {{"tls_ca", "edTlsCaMySQL"},
                                     {"tls_cert", "edTlsCertMySQL"},
                                     {"tls_key", "edTlsKeyMySQL"},
                                     {"socket", "edSocketMySQL"},
                                     {"server_public_key", "edServerKeyMySQL"},
                                     {"get_server_public_key", "cbGetServerKeyMySQL"},
                                     {"allow_old_login", "cbOldLoginMySQL"}};
constexpr char kTlsField[] = "cTlsMySQL";
constexpr TConnField kOracle[] = {{"server", "cServerORA"},
                                  {"username", "edUsernameORA"},
                                  {"password", "edPasswordORA"},
                                  {"authmode", "cAuthModeORA"},
                                  {"direct", "rbNetORA"}};
constexpr TConnField kText[] = {{"folder", "edTextFolder"}, {"HDR", "cbTextHDR"}};
constexpr TConnField kODBC[] = {{"dsn", "cDSN"}};

// An engine with a page. One without fields can be shown, and that is all.
struct TConnPage {
  int engine;
  const char* page;
  std::span<const TConnField> fields = {};
};

constexpr TConnPage kPages[] = {
    {1, "tabFolder"},
    {kEngineDBF, "tabFolder", kFolder},
    {kEngineLotus, "tsFile", kFile},
    {kEngineInterbase, "tsIB", kInterbase},
    {kEngineAccess, "tsAccess", kAccess},
    {kEngineSQLServer, "tsMSSQL", kSQLServer},
    {kEngineMySQL, "tsMySQL", kMySQL},
    {kEngineMySQLScript, "tsFile"},
    {kEngineOracle, "tsOracle", kOracle},
    {kEngineParadox, "tabFolder", kFolder},
    {kEngineText, "tsText", kText},
    {kEngineXml, "tsFile"},
    {kEngineExcel, "tsFile", kExcel},
    {kEngineFoxPro, "tabFolder", kFolder},
    {kEngineODBC, "tsODBC", kODBC},
};

const TConnPage* PageOf(int engine) {
  const auto* page = std::ranges::find(kPages, engine, &TConnPage::engine);
  return page == std::end(kPages) ? nullptr : page;
}

bool HasCodePage(int engine) { return engine == kEngineDBF || engine == kEngineFoxPro; }

// What was typed or chosen stays; a choice does not when it is no longer among the items.
void SetItems(QComboBox& list, const TStringList& items) {
  const QString text = list.currentText();
  list.clear();
  for (const std::string& item : items) list.addItem(ToQt(item));
  list.setCurrentIndex(list.isEditable() ? -1 : list.findText(text));
  if (list.isEditable()) list.setEditText(text);
}

[[noreturn]] void RaiseCannotCreate(int engine) {
  std::string name;
  StrEngine(engine, name);  // the script engine has no name, so that this raises first
  RaiseError(kCannotCreate + name);
}

// The port that stands there unasked is none that was given: it leaves a server of this computer its socket.
void SettleRoute(TEngineValues& values) {
  const bool local = IsLocalServer(values.Text("server"));
  if (local && values.Integer("port") == kMySqlPort) values.Set("port", "0");
  if (!local && values.Has("socket")) RaiseError(FromQt(kSocketElsewhere));
}

}  // namespace

TfrConn::TfrConn(TEngineClients clients, QWidget* parent, TEnumerators enumerators)
    : QWidget(parent), clients_(std::move(clients)), enumerators_(std::move(enumerators)) {
  // Beside each other, so that only the page in view takes space.
  (new QVBoxLayout(this))->setContentsMargins(0, 0, 0, 0);
  MakeMySQLPage();
  MakeFolderPage();
  MakeFilePage();
  MakeMSSQLPage();
  MakeTextPage();
  MakeIBPage();
  MakeOraclePage();
  MakeAccessPage();
  MakeODBCPage();
  SetEngine(kEngineNone);
}

// --- The engine

void TfrConn::SetEngine(int engine) {
  engine_ = engine;
  ResetFields();
  setVisible(engine != kEngineNone);
  if (engine == kEngineNone) return;
  const TConnPage* page = PageOf(engine);
  if (page == nullptr) RaiseError(kUnhandledEngine);
  ShowPage(page->page);
  auto* header = findChild<QCheckBox*>(ToQt("cbFileHDR"));
  header->setChecked(false);
  header->setVisible(engine == kEngineExcel);
  auto* folder = findChild<QWidget*>(ToQt("tabFolder"));
  auto* code_page = folder->findChild<QLineEdit*>(ToQt(kCodePage.field));
  qobject_cast<QFormLayout*>(folder->layout())->setRowVisible(code_page, HasCodePage(engine));
}

// Deliberate: what was chosen with radio buttons stays, but for the kind of columns.
void TfrConn::ResetFields() {
  for (auto* field : findChildren<QLineEdit*>()) field->clear();
  for (auto* field : findChildren<QComboBox*>()) field->setCurrentIndex(-1);
  for (const char* list : {"cServerMSSQL", "cServerIB", "cServerORA"}) findChild<QComboBox*>(ToQt(list))->clear();
  findChild<QLineEdit*>(ToQt("edServerMySQL"))->setText(ToQt(kLocalServer));
  findChild<QSpinBox*>(ToQt("edPortMySQL"))->setValue(kMySqlPort);
  findChild<QComboBox*>(ToQt(kTlsField))->setCurrentIndex(static_cast<int>(ETls::Preferred));
  for (const char* box : {"cbGetServerKeyMySQL", "cbOldLoginMySQL"})
    findChild<QCheckBox*>(ToQt(box))->setChecked(false);
  findChild<QComboBox*>(ToQt("cAuthModeORA"))->setCurrentIndex(0);
  findChild<QRadioButton*>(ToQt("rbTextDelimited"))->setChecked(true);
}

void TfrConn::ShowPage(const char* name) {
  for (QWidget* page : findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
    const bool shown = page->objectName() == ToQt(name);
    page->setVisible(shown);
    if (shown) setFocusProxy(page);
  }
}

TEngineValues TfrConn::Values() const {
  const TConnPage* page = PageOf(engine_);
  if (page == nullptr || page->fields.empty()) RaiseCannotCreate(engine_);
  TEngineValues values;
  for (const TConnField& field : page->fields) values.Set(field.key, FieldText(field.field));
  if (engine_ == kEngineMySQL) AddMore(values);
  if (const std::string page_of_files = FieldText(kCodePage.field); HasCodePage(engine_) && !page_of_files.empty())
    values.Set(kCodePage.key, page_of_files);
  if (engine_ == kEngineExcel) values.Set("IMEX", "Y");
  if (engine_ == kEngineText) {
    values.Set("separator", Separator());
    values.Set(kDelimited, Checked("rbTextDelimited") ? "Y" : "N");
  }
  return values;
}

void TfrConn::AddMore(TEngineValues& values) const {
  for (const TConnField& field : kMySQLMore)
    if (const std::string text = FieldText(field.field); !text.empty() && text != "N") values.Set(field.key, text);
  const std::string mode = FieldText(kTlsField);
  // Beside certificates to trust, silence would mean another mode.
  if (mode != kTlsModes[static_cast<int>(ETls::Preferred)] || values.Has("tls_ca")) values.Set("tls", mode);
}

void TfrConn::TakeServer(const TEngineValues& values) {
  SetEngine(kEngineMySQL);
  for (const std::span<const TConnField> fields : {std::span<const TConnField>(kMySQL), {kMySQLMore}})
    for (const TConnField& field : fields)
      if (values.Has(field.key)) SetFieldText(field.field, values.Text(field.key));
  if (values.Has("tls")) SetFieldText(kTlsField, values.Text("tls"));
  TEngineValues more;
  AddMore(more);
  const auto given = [&more](const TEngineKey& key) { return more.Has(key.name); };
  if (std::ranges::any_of(FindEngine(kEngineMySQL)->further, given))
    findChild<QAbstractButton*>(ToQt("bnMoreMySQL"))->setChecked(true);
}

void TfrConn::ChooseDatabase() {
  auto* list = findChild<QComboBox*>(ToQt("cDBMySQL"));
  if (!list->isVisible()) return;
  list->setFocus();
  list->showPopup();
}

std::unique_ptr<TDBConn> TfrConn::CreateConnection() const {
  TEngineValues values = Values();
  if (engine_ == kEngineMySQL) SettleRoute(values);
  return MakeEngine(*FindEngine(engine_), values, clients_);
}

std::string TfrConn::FieldText(const char* name) const {
  auto* field = findChild<QWidget*>(ToQt(name));
  if (const auto* button = qobject_cast<QAbstractButton*>(field)) return button->isChecked() ? "Y" : "N";
  if (const auto* number = qobject_cast<QSpinBox*>(field)) return Format("%d", number->value());
  if (const auto* list = qobject_cast<QComboBox*>(field)) return FromQt(list->currentText());
  return FromQt(qobject_cast<QLineEdit*>(field)->text());
}

// What is not among a list's items becomes one: the server has not been asked yet.
void TfrConn::SetFieldText(const char* name, const std::string& text) {
  auto* field = findChild<QWidget*>(ToQt(name));
  if (auto* button = qobject_cast<QAbstractButton*>(field)) button->setChecked(text == "Y");
  if (auto* number = qobject_cast<QSpinBox*>(field)) number->setValue(ToQt(text).toInt());
  if (auto* entry = qobject_cast<QLineEdit*>(field)) entry->setText(ToQt(text));
  auto* list = qobject_cast<QComboBox*>(field);
  if (list == nullptr) return;
  if (!text.empty() && list->findText(ToQt(text)) < 0) list->addItem(ToQt(text));
  list->setCurrentIndex(text.empty() ? -1 : list->findText(ToQt(text)));
}

bool TfrConn::Checked(const char* name) const { return findChild<QAbstractButton*>(ToQt(name))->isChecked(); }

// The separator of delimited columns; empty for columns of fixed width. Deliberate: "Other" without a character is let
// through.
std::string TfrConn::Separator() const {
  if (!Checked("rbTextDelimited")) return {};
  if (Checked("rbTextSepTab")) return "\t";
  if (Checked("rbTextSepComma")) return ",";
  std::string separator = FieldText("edTextSep");
  if (separator == "\"") RaiseError(kBadSeparator);
  return separator;
}

// --- Lists

void TfrConn::ListDatabases(QComboBox& list) {
  const TBusyCursor busy;
  TStringList databases;
  CreateConnection()->ListDatabases(databases);
  SetItems(list, databases);
}

void TfrConn::ListSources(QComboBox& list, const TEnumerator& enumerator) {
  const TBusyCursor busy;
  SetItems(list, {});
  SetItems(list, DataSourceNames(enumerator));
}

void TfrConn::ListOracleServices(QComboBox& list) {
  SetItems(list, {});
  if (!Checked("rbNetORA")) SetItems(list, OracleServiceNames(enumerators_));
}

// --- Browsing

void TfrConn::BrowseFolder(QLineEdit& field) {
  std::error_code error;
  const std::string start = std::filesystem::current_path(error).string();
  const std::string folder = velmora::BrowseFolder(kSelectFolder, start);
  if (folder.empty()) return;
  field.setText(ToQt(folder));
  std::filesystem::current_path(folder, error);
  if (error) RaiseError(FromQt(TText::tr("Cannot enter %1: %2").arg(ToQt(folder), ToQt(error.message()))));
}

void TfrConn::BrowseDatabaseFile(QLineEdit& field) {
  std::string path = FromQt(field.text());
  if (OpenDatabaseFile(engine_, path)) field.setText(ToQt(path));
}

void TfrConn::BrowsePemFile(QLineEdit& field) {
  std::string path = FromQt(field.text());
  if (Host().OpenFile(FromQt(TText::tr("Certificates and keys")) + kPemMasks, path)) field.setText(ToQt(path));
}

void TfrConn::BrowseSystemDatabase(QLineEdit& field) {
  std::string path = FromQt(field.text());
  if (Host().OpenFile(kSystemDatabases, path)) field.setText(ToQt(path));
}

}  // namespace velmora
