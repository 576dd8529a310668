// What the task asks of a comparison: options of the exact dialect, and of a reference that is not MySQL what its
// columns become, the user's rules for that, and what is accepted.

#include <QLabel>
#include <QPushButton>
#include <QStatusBar>

#include "app/MappingDraft.h"
#include "foreign/FactReaders.h"
#include "shell/widgets/Named.h"
#include "shell/windows/ComparisonDialog.h"
#include "shell/windows/Main.h"
#include "shell/windows/MappingDialog.h"
#include "util/Counted.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kMappingHint[] =
    "What the columns of the reference become in MySQL, your own rules, and what is accepted without a form there";
constexpr char kOptionsHint[] = "What is compared, and how it is written: definers and more";
constexpr char kNotExact[] = "For the automatic or the exact dialect";
constexpr char kNotForeign[] = "For a reference that is not MySQL, in the automatic or the exact dialect";
constexpr char kNothingOffered[] = "Nothing that is new may be what the focused action is about";
constexpr char kUnmade[] =
    "No form in MySQL: %s of the reference. The databases are not identical before that is accepted.";
constexpr char kNotThere[] = "The reference has no column %s";
constexpr char kAccepted[] = "Accepted: %s without a form in MySQL";
constexpr char kLater[] = "This is kept when the task is saved. Press F9 to analyze.";

}  // namespace

QWidget* TfmMain::MakeUnmadeBar() {
  lbUnmade_ = Named(new QLabel, "lbUnmade");
  auto* show = Named(new QPushButton(ToQt("Show and accept...")), "bnUnmade");
  barUnmade_ = MakeBar("barUnmade", lbUnmade_, show, [this] { EditMapping(EMappingPage::Unmade); });
  return barUnmade_;
}

bool TfmMain::MapsReference() const {
  const auto& reference = app_->connections.reference;
  return active_ && reference && app_->Dialect().Traits().maps_foreign && HasFactReader(*reference);
}

// A task of another reference may have them; they say nothing of this one.
TForeignWishes TfmMain::Wishes() const {
  return MapsReference() ? ReadForeignWishes(task_->Foreign) : TForeignWishes();
}

const TDifference* TfmMain::FocusedColumn() const {
  const std::optional<std::size_t> place = pnDifferences_->Current();
  if (!place || differences_->At(*place).kind != EDifferenceKind::Column) return nullptr;
  return &differences_->At(*place);
}

// A dialect without them passes over what a task keeps for the other. What the program's options say of them holds too.
TExactWishes TfmMain::ExactOptionsOfTask() const {
  if (!app_->Dialect().Traits().has_options) return {};
  TExactWishes wishes = ReadExactWishes(task_->Exact);
  if (!options_.SelectSyncTables) wishes.selection = {};
  if (options_.NoForeignKeyChecks) wishes.locks.fast_foreign_keys = true;
  return wishes;
}

void TfmMain::ShowMapping() {
  const bool options = active_ && app_->Dialect().Traits().has_options;
  Command("acComparison")->setEnabled(options);
  Command("acComparison")->setToolTip(QLatin1String(options ? kOptionsHint : kNotExact));
  Command("acRename")->setVisible(options);
  Command("acRename")->setEnabled(options && !OfferedRename().empty());
  const bool maps = MapsReference();
  QAction* mapping = Command("acMapping");
  mapping->setEnabled(maps);
  mapping->setToolTip(QLatin1String(maps ? kMappingHint : kNotForeign));
  Command("acMapColumn")->setVisible(maps);
  Command("acMapColumn")->setEnabled(maps && FocusedColumn() != nullptr);
}

void TfmMain::ShowUnmade() {
  const TFindings found = app_->Dialect().Findings();
  lbUnmade_->setText(ToQt(Format(kUnmade, Counted(found.unmade.size(), "element"))));
  barUnmade_->setVisible(!found.unmade.empty());
  // Where all is equal the messages are out of sight.
  if (!found.accepted.empty() && app_->Dialect().Identical())
    statusBar()->showMessage(ToQt(Format(kAccepted, Counted(found.accepted.size(), "element"))));
}

// --- What the user changes

void TfmMain::acMapping() { EditMapping(EMappingPage::Columns); }

void TfmMain::EditMapping(EMappingPage page) {
  TfmMapping dialog(Wishes(), app_->Dialect().Findings(), this);
  if (dialog.Edit(page)) TakeWishes(dialog.Wishes());
}

void TfmMain::acMapColumn() {
  const TDifference* focused = FocusedColumn();
  if (focused == nullptr) RaiseError(kNothingFocused);
  TMappingDraft draft(Wishes(), app_->Dialect().Findings());
  const TMadeColumn* column = draft.Find(focused->table, focused->item);
  if (column == nullptr) RaiseError(Format(kNotThere, focused->item));
  if (TfmMapping::MapColumn(draft, *column, this)) TakeWishes(draft.Wishes());
}

std::string TfmMain::OfferedRename() const {
  const std::optional<std::size_t> place = pnDifferences_->Current();
  return place ? differences_->At(*place).rename : std::string();
}

// Taken back where it was asked for: among the task's options.
void TfmMain::acRename() {
  const std::string offered = OfferedRename();
  if (offered.empty()) RaiseError(kNothingOffered);
  TExactWishes wishes = ReadExactWishes(task_->Exact);
  wishes.renames.push_back(ReadRename(offered));
  task_->Exact = ExactWishesText(wishes);
  WishesChanged(true);
}

void TfmMain::acComparison() {
  TfmComparison dialog(this);
  TExactWishes wishes = ReadExactWishes(task_->Exact);
  if (!dialog.Edit(wishes)) return;
  task_->Exact = ExactWishesText(wishes);
  WishesChanged(differences_->Count() > 0);
}

void TfmMain::TakeWishes(const TForeignWishes& wishes) {
  task_->Foreign = ForeignWishesText(wishes);
  WishesChanged(!app_->Dialect().Findings().mapping.empty());
}

void TfmMain::WishesChanged(bool compared) {
  task_->TaskIsUnsaved = true;
  statusBar()->clearMessage();
  if (compared && MayLoseScript()) return Analyze();
  statusBar()->showMessage(QLatin1String(kLater));
}

}  // namespace velmora
