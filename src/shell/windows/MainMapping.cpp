// SPDX-License-Identifier: GPL-3.0-or-later

// What the task asks of a comparison: options of the exact dialect, and of a reference that is not MySQL what its
// columns become, the user's rules for that, and what is accepted.

#include <QLabel>
#include <QPushButton>
#include <QStatusBar>
#include <algorithm>

#include "app/MappingDraft.h"
#include "foreign/FactReaders.h"
#include "shell/widgets/Named.h"
#include "shell/widgets/Text.h"
#include "shell/windows/ComparisonDialog.h"
#include "shell/windows/Main.h"
#include "shell/windows/MappingDialog.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr TText kMappingHint = TText::Later(
    "What the columns of the reference become in MySQL, your own rules, and what is accepted without a form there");
constexpr TText kOptionsHint = TText::Later("What is compared, and how it is written: definers and more");
constexpr TText kNotExact = TText::Later("For the automatic or the exact dialect");
constexpr TText kNotForeign = TText::Later("For a reference that is not MySQL, in the automatic or the exact dialect");

// A column's table may go by either of its names.
void TakeBack(const TRename& rename, std::vector<TRename>& renames) {
  const auto of_table = [&](const TRename& other) {
    return other.table == rename.table || std::ranges::any_of(renames, [&](const TRename& table) {
             return table.OfTable() && table.to == rename.table && table.from == other.table;
           });
  };
  const auto same = std::ranges::find_if(renames, [&](const TRename& other) {
    return other.from == rename.from && other.to == rename.to && of_table(other);
  });
  if (same != renames.end()) renames.erase(same);
}

}  // namespace

QWidget* TfmMain::MakeUnmadeBar() {
  lbUnmade_ = Named(new QLabel, "lbUnmade");
  auto* show = Named(new QPushButton(TText::tr("Show and accept...")), "bnUnmade");
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

const TDifference* TfmMain::FocusedAction() const {
  const std::optional<std::size_t> place = pnDifferences_->Current();
  return place ? &differences_->At(*place) : nullptr;
}

const TDifference* TfmMain::FocusedColumn() const {
  const TDifference* focused = FocusedAction();
  return focused != nullptr && focused->kind == EDifferenceKind::Column ? focused : nullptr;
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
  Command("acComparison")->setToolTip(options ? kOptionsHint : kNotExact);
  Command("acRename")->setVisible(options);
  ShowRename();
  const bool maps = MapsReference();
  QAction* mapping = Command("acMapping");
  mapping->setEnabled(maps);
  mapping->setToolTip(maps ? kMappingHint : kNotForeign);
  Command("acMapColumn")->setVisible(maps);
  Command("acMapColumn")->setEnabled(maps && FocusedColumn() != nullptr);
}

void TfmMain::ShowUnmade() {
  const TFindings found = app_->Dialect().Findings();
  lbUnmade_->setText(TText::Counted(
      "No form in MySQL: %n element(s) of the reference. The databases are not identical before that is accepted.",
      nullptr, found.unmade.size()));
  barUnmade_->setVisible(!found.unmade.empty());
  // Where all is equal the messages are out of sight.
  if (!found.accepted.empty() && app_->Dialect().Identical())
    statusBar()->showMessage(
        TText::Counted("Accepted: %n element(s) without a form in MySQL", nullptr, found.accepted.size()));
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
  if (column == nullptr) RaiseError(FromQt(TText::tr("The reference has no column %1").arg(ToQt(focused->item))));
  if (TfmMapping::MapColumn(draft, *column, this)) TakeWishes(draft.Wishes());
}

void TfmMain::ShowRename() {
  const TDifference* focused = FocusedAction();
  const bool offered = focused != nullptr && !focused->rename.empty();
  const bool done = focused != nullptr && !focused->renamed.empty();
  QString caption = TText::tr("Rename instead");
  if (offered) {
    const TRename rename = ReadRename(focused->rename);
    caption = TText::tr("Rename %1 to %2 instead (score %3)")
                  .arg(ToQt(rename.from), ToQt(rename.to), ToQt(Format("%.1f", focused->score)));
  } else if (done) {
    const TRename rename = ReadRename(focused->renamed);
    caption = TText::tr("Do not rename %1 to %2").arg(ToQt(rename.from), ToQt(rename.to));
  }
  Command("acRename")->setText(caption.replace(QLatin1Char('&'), QLatin1String("&&")));
  Command("acRename")->setEnabled(offered || done);
}

void TfmMain::acRename() {
  const TDifference* focused = FocusedAction();
  if (focused == nullptr || (focused->rename + focused->renamed).empty())
    RaiseError(FromQt(TText::tr("Nothing that is new may be what the focused action is about")));
  const std::string asked = focused->rename;
  TExactWishes wishes = ReadExactWishes(task_->Exact);
  if (asked.empty())
    TakeBack(ReadRename(focused->renamed), wishes.renames);
  else
    wishes.renames.push_back(ReadRename(asked));
  task_->Exact = ExactWishesText(wishes);
  WishesChanged(true);
  FocusRename(asked);
}

// The comparison after it has other actions.
void TfmMain::FocusRename(const std::string& rename) {
  for (std::size_t place = 0; place < differences_->Count(); ++place)
    if (!rename.empty() && differences_->At(place).renamed == rename) pnDifferences_->Select({place});
}

void TfmMain::acComparison() {
  TfmComparison dialog(this);
  TExactWishes wishes = ReadExactWishes(task_->Exact);
  TExactWishes former = wishes;
  if (!dialog.Edit(wishes)) return;
  task_->Exact = ExactWishesText(wishes);
  former.waits = wishes.waits;
  if (former != wishes) return WishesChanged(differences_->Count() > 0);
  task_->TaskIsUnsaved = true;
  statusBar()->showMessage(TText::tr("This holds for the runs from here on, and is kept when the task is saved."));
}

void TfmMain::TakeWishes(const TForeignWishes& wishes) {
  task_->Foreign = ForeignWishesText(wishes);
  WishesChanged(!app_->Dialect().Findings().mapping.empty());
}

void TfmMain::WishesChanged(bool compared) {
  task_->TaskIsUnsaved = true;
  statusBar()->clearMessage();
  if (compared && MayLoseScript()) return Analyze();
  statusBar()->showMessage(TText::tr("This is kept when the task is saved. Press F9 to analyze."));
}

}  // namespace velmora
