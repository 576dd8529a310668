// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/windows/MappingDialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTabWidget>
#include <QTableView>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <algorithm>

#include "shell/widgets/MappingModel.h"
#include "shell/widgets/Named.h"
#include "shell/widgets/Text.h"
#include "shell/widgets/TopLevel.h"
#include "shell/windows/MapRuleDialog.h"

namespace velmora {

namespace {

constexpr TText kNotCompared =
    TText::Later("Nothing was compared yet: F9 in the main window shows what the columns become.");
constexpr TText kUnmadeText = TText::Later(
    "What the reference has and MySQL has no form for. As long as any of it is not accepted, the databases are not "
    "identical; what is accepted stays in the target as it is.");
constexpr TText kRulesText = TText::Later("Your own types come before the usual ones.");
constexpr TText kKept = TText::Later("Kept when the task is saved. OK compares again what was compared.");
constexpr QSize kSize(790, 520);
constexpr int kCellLetters = 36;  // of a column that its contents would make wider

struct TSwitch {
  const char* name;
  TText caption;
  bool TForeignWishes::*member;
};
constexpr TSwitch kSwitches[] = {
    {"chkWholeNumbers", TText::Later("Decimals &without digits behind the point become integers"),
     &TForeignWishes::whole_numbers},
    {"chkStrictTypes", TText::Later("&Strict types: one that holds more than the source's is a difference, too"),
     &TForeignWishes::strict_types},
    {"chkAcceptTimestamp", TText::Later("ti&mestamp may stand for datetime, though it ends in 2038"),
     &TForeignWishes::accept_timestamp},
    {"chkDropObsolete", TText::Later("&Drop tables that the target alone has (unsafe)"),
     &TForeignWishes::drop_obsolete}};

QLabel* Paragraph(const QString& text) {
  auto* label = new QLabel(text);
  label->setWordWrap(true);
  return label;
}

QTreeWidget* List(const char* name, const QString& spoken, const QStringList& headings) {
  auto* list = Named(new QTreeWidget, name);
  list->setAccessibleName(spoken);
  list->setHeaderLabels(headings);
  list->setRootIsDecorated(false);
  list->setUniformRowHeights(true);
  return list;
}

// Columns as wide as their contents, but none that takes it all; rows as high as their text.
void Fit(QTableView& table) {
  const QFontMetrics metrics = table.fontMetrics();
  table.verticalHeader()->setDefaultSectionSize(metrics.height() * 3 / 2);
  table.horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
  table.resizeColumnsToContents();
  const int widest = kCellLetters * metrics.averageCharWidth();
  for (int i = 0; i + 1 < table.model()->columnCount(); ++i)
    table.setColumnWidth(i, std::min(table.columnWidth(i), widest));
  table.horizontalHeader()->setStretchLastSection(true);
}

}  // namespace

TfmMapping::TfmMapping(const TForeignWishes& wishes, const TFindings& found, QWidget* parent)
    : QDialog(parent),
      draft_(wishes, found),
      before_(draft_.Wishes()),
      wishes_(before_),
      pages_(Named(new QTabWidget, "pages")) {
  setObjectName(ToQt("fmMapping"));
  setWindowTitle(TText::tr("Mapping"));
  resize(kSize);
  pages_->addTab(MakeColumns(), TText::tr("Columns"));
  pages_->addTab(MakeRules(), TText::tr("Rules"));
  pages_->addTab(MakeUnmade(), TText::tr("No form in MySQL"));
  pages_->addTab(MakeOptions(), TText::tr("Options"));
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  QPushButton* ok = Named(buttons->button(QDialogButtonBox::Ok), "butOK");
  QPushButton* cancel = Named(buttons->button(QDialogButtonBox::Cancel), "butCancel");
  ok->setDefault(true);
  Handle(ok, &QPushButton::clicked, this, [this] {
    TakeOptions();
    accept();
  });
  Handle(cancel, &QPushButton::clicked, this, [this] { reject(); });
  auto* foot = new QHBoxLayout;
  foot->addWidget(new QLabel(kKept), 1);
  foot->addWidget(buttons);
  auto* all = new QVBoxLayout(this);
  all->addWidget(pages_, 1);
  all->addLayout(foot);
  RulesChanged();
  ShowElements();
}

bool TfmMapping::Edit(EMappingPage page) {
  pages_->setCurrentIndex(static_cast<int>(page));
  pages_->currentWidget()->setFocus();
  return exec() == Accepted && wishes_ != before_;
}

QPushButton* TfmMapping::Button(const char* name, const QString& caption, const std::function<void()>& click) {
  auto* button = Named(new QPushButton(caption), name);
  button->setAutoDefault(false);
  Handle(button, &QPushButton::clicked, this, click);
  return button;
}

// --- Columns

QWidget* TfmMapping::MakeColumns() {
  filter_ = Named(new QLineEdit, "edMappingFilter");
  filter_->setPlaceholderText(TText::tr("Filter"));
  filter_->setAccessibleName(TText::tr("Filter of the columns"));
  filter_->setClearButtonEnabled(true);
  level_ = Named(new QComboBox, "cLevel");  // by EMappingShown
  level_->addItems(
      {TText::tr("All"), TText::tr("Warnings and refused"), TText::tr("Refused"), TText::tr("By your rules")});
  level_->setAccessibleName(TText::tr("Which columns are shown"));
  model_ = new TMappingModel(draft_, this);
  columns_ = Named(new QTableView, "tvColumns");
  columns_->setAccessibleName(TText::tr("Columns"));
  columns_->setModel(model_);
  columns_->setSelectionBehavior(QAbstractItemView::SelectRows);
  columns_->setSelectionMode(QAbstractItemView::SingleSelection);
  columns_->setShowGrid(false);
  columns_->setTabKeyNavigation(false);
  columns_->verticalHeader()->hide();
  Fit(*columns_);
  map_ = Button("bnMapTo", TText::tr("&Map to..."), [this] { MapCurrent(); });
  auto* map = Named(new QAction(map_->text(), this), "acMapTo");
  Handle(map, &QAction::triggered, this, [this] { MapCurrent(); });
  columns_->addAction(map);
  columns_->setContextMenuPolicy(Qt::ActionsContextMenu);
  Handle(columns_, &QTableView::doubleClicked, this, [this] { MapCurrent(); });
  Handle(filter_, &QLineEdit::textChanged, this, [this] { ShowColumns(); });
  Handle(level_, &QComboBox::currentIndexChanged, this, [this] { ShowColumns(); });

  auto* page = new QWidget;
  auto* rows = new QVBoxLayout(page);
  auto* head = new QHBoxLayout;
  head->addWidget(filter_, 1);
  head->addWidget(level_);
  rows->addLayout(head);
  if (!draft_.Compared()) rows->addWidget(Paragraph(kNotCompared));
  rows->addWidget(columns_, 1);
  auto* foot = new QHBoxLayout;
  foot->addWidget(map_);
  foot->addStretch();
  rows->addLayout(foot);
  page->setFocusProxy(columns_);
  return page;
}

void TfmMapping::ShowColumns() {
  model_->Show(static_cast<EMappingShown>(level_->currentIndex()), FromQt(filter_->text()));
  map_->setEnabled(model_->rowCount() > 0);
}

void TfmMapping::MapCurrent() {
  const QModelIndex line = columns_->currentIndex();
  if (!line.isValid() || model_->At(line.row()).column.empty()) return;
  if (MapColumn(draft_, model_->At(line.row()), this)) RulesChanged();
}

bool TfmMapping::MapColumn(TMappingDraft& draft, const TMadeColumn& column, QWidget* parent) {
  const std::optional<std::size_t> own = draft.OwnRule(column);
  const TMapRule rule = own ? draft.Rules()[*own] : TMapRule{column.Place(), draft.TypeOf(column)};
  TStringList names = {column.Place(), column.source};
  if (column.names.back() != column.source) names.push_back(column.names.back());
  return TfmMapRule(parent).Edit(rule, names, [&](const TMapRule& entered) { draft.PutRule(entered, own); });
}

// --- Rules

QWidget* TfmMapping::MakeRules() {
  rules_ = List("twRules", TText::tr("Rules"),
                {TText::tr("In the source"), TText::tr("In MySQL"), TText::tr("Decides for")});
  change_ = Button("bnChangeRule", TText::tr("&Change..."), [this] { EditRule(CurrentRule()); });
  remove_ = Button("bnRemoveRule", TText::tr("&Remove"), [this] { RemoveRule(); });
  Handle(rules_, &QTreeWidget::itemActivated, this, [this] { EditRule(CurrentRule()); });
  auto* remove = new QAction(this);
  remove->setShortcut(QKeySequence::Delete);
  remove->setShortcutContext(Qt::WidgetShortcut);
  Handle(remove, &QAction::triggered, this, [this] { RemoveRule(); });
  rules_->addAction(remove);

  auto* page = new QWidget;
  auto* rows = new QVBoxLayout(page);
  rows->addWidget(Paragraph(kRulesText));
  rows->addWidget(rules_, 1);
  auto* foot = new QHBoxLayout;
  foot->addWidget(Button("bnAddRule", TText::tr("&Add..."), [this] { EditRule(std::nullopt); }));
  foot->addWidget(change_);
  foot->addWidget(remove_);
  foot->addStretch();
  rows->addLayout(foot);
  page->setFocusProxy(rules_);
  return page;
}

// Other columns than before may be those of a rule, or have what is filtered by.
void TfmMapping::RulesChanged() {
  ShowRules();
  const QModelIndex current = columns_->currentIndex();
  const TMadeColumn* column = current.isValid() ? &model_->At(current.row()) : nullptr;
  ShowColumns();
  if (column != nullptr) columns_->setCurrentIndex(model_->LineOf(*column));
}

void TfmMapping::ShowRules() {
  const int current = std::max(0, rules_->indexOfTopLevelItem(rules_->currentItem()));
  rules_->clear();
  const std::vector<TMapRule>& rules = draft_.Rules();
  for (std::size_t i = 0; i < rules.size(); ++i)
    rules_->addTopLevelItem(new QTreeWidgetItem({ToQt(rules[i].what), ToQt(rules[i].type), ToQt(draft_.UseOf(i))}));
  if (!rules.empty()) rules_->setCurrentItem(rules_->topLevelItem(std::min(current, rules_->topLevelItemCount() - 1)));
  for (int i = 0; i < rules_->columnCount(); ++i) rules_->resizeColumnToContents(i);
  for (QPushButton* button : {change_, remove_}) button->setEnabled(!rules.empty());
}

std::optional<std::size_t> TfmMapping::CurrentRule() const {
  const int place = rules_->indexOfTopLevelItem(rules_->currentItem());
  return place < 0 ? std::nullopt : std::optional(static_cast<std::size_t>(place));
}

void TfmMapping::EditRule(std::optional<std::size_t> place) {
  const TMapRule rule = place ? draft_.Rules()[*place] : TMapRule();
  if (TfmMapRule(this).Edit(rule, {}, [&](const TMapRule& entered) { draft_.PutRule(entered, place); })) RulesChanged();
}

void TfmMapping::RemoveRule() {
  const std::optional<std::size_t> place = CurrentRule();
  if (!place) return;
  draft_.RemoveRule(*place);
  RulesChanged();
}

// --- What has no form in MySQL

QWidget* TfmMapping::MakeUnmade() {
  elements_ = List("twUnmade", TText::tr("What has no form in MySQL"),
                   {TText::tr("Accepted"), TText::tr("Kind"), TText::tr("Why")});
  Handle(elements_, &QTreeWidget::itemChanged, this, [this] {
    const QSignalBlocker blocker(elements_);
    for (std::size_t i = 0; i < draft_.Elements().size(); ++i) {
      const bool checked = elements_->topLevelItem(static_cast<int>(i))->checkState(0) == Qt::Checked;
      if (checked == draft_.Elements()[i].accepted) continue;
      draft_.Accept(i, checked);
      break;
    }
    ShowElements();
  });
  auto* page = new QWidget;
  auto* rows = new QVBoxLayout(page);
  rows->addWidget(Paragraph(kUnmadeText));
  rows->addWidget(elements_, 1);
  auto* foot = new QHBoxLayout;
  foot->addWidget(Button("bnAcceptAll", TText::tr("Accept &all"), [this] { AcceptAll(); }));
  foot->addStretch();
  rows->addLayout(foot);
  page->setFocusProxy(elements_);
  return page;
}

// What shares its name with another one goes with it.
void TfmMapping::ShowElements() {
  const QSignalBlocker blocker(elements_);
  const std::vector<TDraftElement>& all = draft_.Elements();
  const bool made = elements_->topLevelItemCount() > 0;
  std::size_t open = 0;
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (!made)
      elements_->addTopLevelItem(new QTreeWidgetItem({ToQt(all[i].name), ToQt(all[i].kind), ToQt(all[i].reason)}));
    QTreeWidgetItem* item = elements_->topLevelItem(static_cast<int>(i));
    item->setCheckState(0, all[i].accepted ? Qt::Checked : Qt::Unchecked);
    item->setToolTip(2, item->text(2).toHtmlEscaped());
    if (!all[i].accepted) ++open;
  }
  if (!made)
    for (int i = 0; i < elements_->columnCount(); ++i) elements_->resizeColumnToContents(i);
  if (!made && !all.empty()) elements_->setCurrentItem(elements_->topLevelItem(0));
  const QString title = TText::tr("No form in MySQL");
  pages_->setTabText(static_cast<int>(EMappingPage::Unmade),
                     open == 0 ? title : QStringLiteral("%1 (%2)").arg(title).arg(open));
}

void TfmMapping::AcceptAll() {
  for (std::size_t i = 0; i < draft_.Elements().size(); ++i)
    if (!draft_.Elements()[i].accepted) draft_.Accept(i, true);
  ShowElements();
}

// --- Options

QWidget* TfmMapping::MakeOptions() {
  auto* page = new QWidget;
  auto* rows = new QVBoxLayout(page);
  lower_ = Named(new QCheckBox(TText::tr("Write all &names in lower case")), "chkLowerNames");
  lower_->setChecked(before_.names == ENameCase::Lower);
  rows->addWidget(lower_);
  for (const TSwitch& row : kSwitches) {
    auto* box = Named(new QCheckBox(row.caption), row.name);
    box->setChecked(before_.*row.member);
    rows->addWidget(box);
  }
  collation_ = Named(new QLineEdit(ToQt(before_.collation)), "edCollation");
  collation_->setPlaceholderText(TText::tr("the server's own of utf8mb4"));
  auto* form = new QFormLayout;
  form->addRow(TText::tr("Colla&tion of new tables and columns"), collation_);
  rows->addLayout(form);
  rows->addStretch();
  page->setFocusProxy(lower_);
  return page;
}

void TfmMapping::TakeOptions() {
  const std::string collation = FromQt(collation_->text().trimmed());
  const std::string read = collation.empty() ? collation : ReadCollation(collation);
  wishes_ = draft_.Wishes();
  wishes_.collation = read;
  wishes_.names = lower_->isChecked() ? ENameCase::Lower : ENameCase::Keep;
  for (const TSwitch& row : kSwitches) wishes_.*row.member = findChild<QCheckBox*>(ToQt(row.name))->isChecked();
}

}  // namespace velmora
