// SPDX-License-Identifier: GPL-3.0-or-later

// The pages of the connection frame: fields, captions and what each field does.

#include <QCheckBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QSpinBox>
#include <QToolButton>
#include <QVBoxLayout>

#include "shell/widgets/DropCombo.h"
#include "shell/widgets/Named.h"
#include "shell/widgets/QtText.h"
#include "shell/widgets/Text.h"
#include "shell/widgets/TopLevel.h"
#include "shell/widgets/frameConn.h"

namespace velmora {

namespace {

constexpr int kLastPort = 65535;
constexpr TText kPortHint = TText::Later(
    "The usual port is 3306. With it, a server on localhost is reached by its socket, if there is one, and by TCP "
    "otherwise. Write 127.0.0.1 for TCP alone.");

constexpr TText kCodePageHint =
    TText::Later("For files of dBASE and FoxPro that do not name theirs, or name a wrong one: 850, CP1252, KOI8-R");

void OnChecked(QAbstractButton* button, const std::function<void()>& handler) {
  Handle(button, &QAbstractButton::toggled, button, [button, handler] {
    if (button->isChecked()) handler();
  });
}

// An entry that tells when it is entered.
class TEnteredEdit final : public QLineEdit {
 public:
  std::function<void()> OnEnter;

 protected:
  void focusInEvent(QFocusEvent* event) override {
    QLineEdit::focusInEvent(event);
    if (OnEnter) OnEnter();
  }
};

// A page in the making: rows of a caption and a field. A caption marks its key by "&". Entered, the page gives the
// focus to its first field.
class TPageMaker {
 public:
  TPageMaker(QWidget* frame, const char* name) : page_(Named(new QWidget(frame), name)), form_(new QFormLayout(page_)) {
    form_->setContentsMargins(0, 0, 0, 0);
    form_->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    frame->layout()->addWidget(page_);
  }

  template <class T>
  T* Row(const QString& caption, T* field) {
    form_->addRow(caption, field);
    BeginWith(field);
    return field;
  }
  template <class T>
  T* WideRow(T* field) {
    form_->addRow(field);
    return field;
  }

  QLineEdit* Entry(const char* name, const QString& caption) { return Row(caption, Named(new QLineEdit, name)); }
  // A password and, out of use, the box that once decided whether it is kept: task files always keep it.
  QLineEdit* Secret(const char* name, const QString& caption, const char* store) {
    QLineEdit* entry = Entry(name, caption);
    entry->setEchoMode(QLineEdit::Password);
    WideRow(Named(new QCheckBox(Fixed("Store password (encrypted)")), store))->hide();
    return entry;
  }
  // A list, and with `typed` an entry for any text as well.
  TDropCombo* List(const char* name, const QString& caption, bool typed) {
    auto* list = Named(new TDropCombo, name);
    list->setEditable(typed);
    if (typed) {
      list->setInsertPolicy(QComboBox::NoInsert);
      list->setCompleter(nullptr);  // which would change the case of what is typed
    }
    return Row(caption, list);
  }
  QLineEdit* Browsed(const char* name, const char* button, const QString& caption,
                     const std::function<void(QLineEdit&)>& browse) {
    auto* both = new QWidget;
    auto* entry = Named(new QLineEdit, name);
    auto* open = Named(new QToolButton, button);
    auto* row = new QHBoxLayout(both);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(entry);
    row->addWidget(open);
    open->setText(QStringLiteral("..."));
    open->setToolTip(TText::tr("Browse"));
    const QString label = QString(caption).remove(QLatin1Char('&'));
    open->setAccessibleName(TText::tr("Browse: %1").arg(label));
    entry->setAccessibleName(label);  // the caption is the label of both
    open->setFocusPolicy(Qt::StrongFocus);
    both->setFocusProxy(entry);
    Handle(open, &QToolButton::clicked, page_, [browse, entry] { browse(*entry); });
    Row(caption, both);
    return entry;
  }
  // Two radio buttons beside each other, the first one checked.
  std::pair<QRadioButton*, QRadioButton*> Choice(const QString& caption, QRadioButton* first, QRadioButton* second) {
    auto* both = new QWidget;
    auto* row = new QHBoxLayout(both);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(first);
    row->addWidget(second);
    row->addStretch();
    first->setChecked(true);
    both->setFocusProxy(first);
    Row(caption, both);
    return {first, second};
  }
  QFormLayout* Form() const { return form_; }
  QWidget* Page() const { return page_; }

 private:
  void BeginWith(QWidget* field) {
    if (page_->focusProxy() == nullptr) page_->setFocusProxy(field);
  }

  QWidget* page_;
  QFormLayout* form_;
};

QRadioButton* Radio(const char* name, const QString& caption) { return Named(new QRadioButton(caption), name); }

QCheckBox* ColumnNamesBox(const char* name) {
  return Named(new QCheckBox(Fixed("First record are column &names")), name);
}

}  // namespace

void TfrConn::MakeMySQLPage() {
  TPageMaker page(this, "tsMySQL");
  page.Entry("edServerMySQL", Fixed("&Server"));
  auto* port = page.Row(TText::tr("P&ort"), Named(new QSpinBox, "edPortMySQL"));
  port->setRange(0, kLastPort);
  port->setSpecialValueText(TText::tr("usual", "port"));
  port->setToolTip(kPortHint);
  port->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  page.Entry("edUsernameMySQL", Fixed("&Username"));
  page.Secret("edPasswordMySQL", Fixed("&Password"), "cbStorePasswordMySQL");
  TDropCombo* databases = page.List("cDBMySQL", Fixed("&Database"), false);
  databases->OnDropDown = [this, databases] { ListDatabases(*databases); };
  MakeMoreOfMySQL(*page.WideRow(new QWidget));
}

// How the server is reached: a fold, since most servers need none of it.
void TfrConn::MakeMoreOfMySQL(QWidget& fold) {
  auto* column = new QVBoxLayout(&fold);
  column->setContentsMargins(0, 0, 0, 0);
  auto* open = Named(new QToolButton, "bnMoreMySQL");
  open->setText(TText::tr("&More"));
  open->setToolTip(TText::tr("TLS, certificates, local socket, login"));
  open->setCheckable(true);
  open->setAutoRaise(true);
  open->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  open->setFocusPolicy(Qt::StrongFocus);
  column->addWidget(open);

  TPageMaker more(&fold, "panMoreMySQL");
  const auto browse = [](QLineEdit& field) { BrowsePemFile(field); };
  auto* tls = more.Row(TText::tr("&TLS"), Named(new QComboBox, "cTlsMySQL"));
  for (const char* mode : kTlsModes) tls->addItem(ToQt(mode));
  QLineEdit* authorities = more.Browsed("edTlsCaMySQL", "bnTlsCaMySQL", TText::tr("CA certi&ficates"), browse);
  more.Browsed("edTlsCertMySQL", "bnTlsCertMySQL", TText::tr("Client c&ertificate"), browse);
  more.Browsed("edTlsKeyMySQL", "bnTlsKeyMySQL", TText::tr("Client ke&y"), browse);
  more.Entry("edSocketMySQL", TText::tr("Local soc&ket"));
  more.Browsed("edServerKeyMySQL", "bnServerKeyMySQL", TText::tr("Ser&ver's public key"), browse);
  more.WideRow(Named(new QCheckBox(TText::tr("Trust the pu&blic key that the server sends")), "cbGetServerKeyMySQL"));
  more.WideRow(Named(new QCheckBox(TText::tr("&Allow old logins, which show the password")), "cbOldLoginMySQL"));

  const auto show = [open, panel = more.Page()](bool shown) {
    panel->setVisible(shown);
    open->setArrowType(shown ? Qt::DownArrow : Qt::RightArrow);
  };
  show(false);
  Handle(open, &QToolButton::toggled, open, [open, show] { show(open->isChecked()); });
  // Whoever names the certificates to trust means them to count.
  Handle(authorities, &QLineEdit::textChanged, tls, [authorities, tls] {
    if (!authorities->text().isEmpty() && tls->currentIndex() == static_cast<int>(ETls::Preferred))
      tls->setCurrentIndex(static_cast<int>(ETls::Required));
  });
}

void TfrConn::MakeFolderPage() {
  TPageMaker page(this, "tabFolder");
  page.Browsed("edFolder", "bnFolder", Fixed("Database &folder"), [this](QLineEdit& field) { BrowseFolder(field); });
  QLineEdit* code_page = page.Entry("edCodePage", TText::tr("Code &page"));
  code_page->setPlaceholderText(TText::tr("as the files say"));
  code_page->setToolTip(kCodePageHint);
}

void TfrConn::MakeFilePage() {
  TPageMaker page(this, "tsFile");
  page.Browsed("edFilename", "bnFilename", Fixed("&Filename"), [this](QLineEdit& field) { BrowseDatabaseFile(field); });
  page.WideRow(ColumnNamesBox("cbFileHDR"));
}

void TfrConn::MakeMSSQLPage() {
  TPageMaker page(this, "tsMSSQL");
  TDropCombo* servers = page.List("cServerMSSQL", Fixed("&Server"), true);
  servers->OnDropDown = [this, servers] { ListSources(*servers, enumerators_.SQLServers); };
  const auto [windows, mixed] = page.Choice(Fixed("Authentication"), Radio("rbWindowsMSSQL", Fixed("&Windows")),
                                            Radio("rbMixedMSSQL", Fixed("&Mixed")));
  QLineEdit* username = page.Entry("edUsernameMSSQL", Fixed("&Username"));
  QLineEdit* password = page.Secret("edPasswordMSSQL", Fixed("&Password"), "cbStorePasswordMSSQL");
  TDropCombo* databases = page.List("cDBMSSQL", Fixed("&Database"), false);
  databases->OnDropDown = [this, databases] { ListDatabases(*databases); };

  const auto show_account = [form = page.Form(), username, password](bool shown) {
    form->setRowVisible(username, shown);
    form->setRowVisible(password, shown);
  };
  show_account(false);
  OnChecked(mixed, [show_account, username] {
    show_account(true);
    username->setFocus();
  });
  OnChecked(windows, [show_account, databases] {
    show_account(false);
    databases->setFocus();
  });
}

void TfrConn::MakeTextPage() {
  TPageMaker page(this, "tsText");
  page.Browsed("edTextFolder", "bnTextFolder", Fixed("Database &folder"),
               [this](QLineEdit& field) { BrowseFolder(field); });
  page.WideRow(ColumnNamesBox("cbTextHDR"));

  auto* group = page.WideRow(new QGroupBox(Fixed("Columns")));
  auto* kinds = new QVBoxLayout(group);
  QRadioButton* delimited = Radio("rbTextDelimited", Fixed("&Delimited"));
  QRadioButton* fixed = Radio("rbTextFixed", Fixed("Fi&xed"));
  auto* panel = Named(new QWidget, "panDelimiters");
  for (QWidget* widget : {static_cast<QWidget*>(delimited), static_cast<QWidget*>(fixed), panel})
    kinds->addWidget(widget);
  delimited->setChecked(true);
  fixed->hide();

  auto* row = new QHBoxLayout(panel);
  row->setContentsMargins(style()->pixelMetric(QStyle::PM_ExclusiveIndicatorWidth), 0, 0, 0);
  QRadioButton* tab = Radio("rbTextSepTab", Fixed("&Tab"));
  QRadioButton* comma = Radio("rbTextSepComma", Fixed("Co&mma"));
  QRadioButton* other = Radio("rbTextSepOther", Fixed("&Other:"));
  auto* separator = Named(new TEnteredEdit, "edTextSep");
  for (QWidget* widget : {static_cast<QWidget*>(tab), static_cast<QWidget*>(comma), static_cast<QWidget*>(other),
                          static_cast<QWidget*>(separator)})
    row->addWidget(widget);
  row->addStretch();
  tab->setChecked(true);
  separator->setMaxLength(1);
  separator->setFixedWidth(4 * fontMetrics().averageCharWidth() + separator->sizeHint().height() / 2);

  OnChecked(delimited, [panel, tab] {
    panel->show();
    tab->setChecked(true);
  });
  OnChecked(fixed, [panel] { panel->hide(); });
  OnChecked(other, [separator] { separator->setFocus(); });
  separator->OnEnter = [other] { other->setChecked(true); };
}

void TfrConn::MakeIBPage() {
  TPageMaker page(this, "tsIB");
  page.List("cServerIB", Fixed("&Server"), true);
  page.Entry("edUsernameIB", Fixed("&Username"));
  page.Secret("edPasswordIB", Fixed("&Password"), "cbStorePasswordIB");
  page.Browsed("edDBIB", "bnDBIB", Fixed("&Database"), [this](QLineEdit& field) { BrowseDatabaseFile(field); });
}

void TfrConn::MakeOraclePage() {
  TPageMaker page(this, "tsOracle");
  const auto [client, direct] =
      page.Choice(Fixed("Using"), Radio("rbOCIORA", Fixed("&Oracle Client")), Radio("rbNetORA", Fixed("D&irectly")));
  TDropCombo* server = page.List("cServerORA", Fixed("&Service"), true);
  server->OnDropDown = [this, server] { ListOracleServices(*server); };
  page.Entry("edUsernameORA", Fixed("&Username"));
  page.Secret("edPasswordORA", Fixed("&Password"), "cbStorePasswordORA");
  TDropCombo* mode = page.List("cAuthModeORA", Fixed("&Auth.mode"), false);
  mode->addItems({Fixed("Normal"), Fixed("SYSDBA"), Fixed("SYSOPER")});

  auto* label = Named(qobject_cast<QLabel*>(page.Form()->labelForField(server)), "lbServerORA");
  OnChecked(client, [label] { label->setText(Fixed("&Service")); });
  OnChecked(direct, [label] { label->setText(Fixed("&Server")); });
}

void TfrConn::MakeAccessPage() {
  TPageMaker page(this, "tsAccess");
  page.Browsed("edFileAccess", "bnFileAccess", Fixed("&Filename"),
               [this](QLineEdit& field) { BrowseDatabaseFile(field); });
  page.Secret("edPasswordAccess", Fixed("&Password"), "cbStorePasswordAccess");
  page.Browsed("edSysDBAccess", "bnSysDBAccess", Fixed("&System database"),
               [this](QLineEdit& field) { BrowseSystemDatabase(field); });
}

void TfrConn::MakeODBCPage() {
  TPageMaker page(this, "tsODBC");
  TDropCombo* sources = page.List("cDSN", Fixed("&DSN"), true);
  sources->OnDropDown = [this, sources] { ListSources(*sources, enumerators_.ODBCSources); };
}

}  // namespace velmora
