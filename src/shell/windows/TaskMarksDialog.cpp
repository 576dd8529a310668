// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/windows/TaskMarksDialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QPixmap>
#include <QPushButton>
#include <cstddef>

#include "shell/widgets/MarkBar.h"
#include "shell/widgets/Named.h"
#include "shell/widgets/Text.h"
#include "shell/widgets/TopLevel.h"

namespace velmora {

namespace {

constexpr TText kPurpose = TText::Later(
    "For a target that matters: the colour stands at the top of the window and in the question "
    "before a run. Marks are kept when the task is saved.");
constexpr int kSwatch = 16;

// By ETaskColour.
constexpr TText kColourNames[] = {TText::Later("None"),   TText::Later("Red"),   TText::Later("Orange"),
                                  TText::Later("Yellow"), TText::Later("Green"), TText::Later("Blue"),
                                  TText::Later("Purple")};
static_assert(std::size(kColourNames) == std::size(kTaskColours));

}  // namespace

TfmTaskMarks::TfmTaskMarks(QWidget* parent)
    : QDialog(parent),
      colour_(Named(new QComboBox, "cColour")),
      confirm_(
          Named(new QCheckBox(TText::tr("Ask me to type the &database's name before a run")), "chkConfirmDatabase")) {
  setObjectName(ToQt("fmTaskMarks"));
  setWindowTitle(TText::tr("Task"));
  for (std::size_t i = 0; i < std::size(kColourNames); ++i) {
    const TMarkColours colours = ColoursOf(static_cast<ETaskColour>(i));
    QPixmap swatch(kSwatch, kSwatch);
    swatch.fill(colours.back.isValid() ? colours.back : QColor(Qt::transparent));
    colour_->addItem(QIcon(swatch), kColourNames[i]);
  }
  auto* purpose = new QLabel(kPurpose);
  purpose->setWordWrap(true);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  QPushButton* ok = Named(buttons->button(QDialogButtonBox::Ok), "butOK");
  QPushButton* cancel = Named(buttons->button(QDialogButtonBox::Cancel), "butCancel");
  ok->setDefault(true);
  Handle(ok, &QPushButton::clicked, this, [this] { accept(); });
  Handle(cancel, &QPushButton::clicked, this, [this] { reject(); });

  auto* form = new QFormLayout(this);
  form->addRow(purpose);
  form->addRow(TText::tr("&Colour"), colour_);
  form->addRow(confirm_);
  form->addRow(buttons);
}

bool TfmTaskMarks::Edit(TTaskMarks& marks) {
  colour_->setCurrentIndex(static_cast<int>(marks.colour));
  confirm_->setChecked(marks.confirm_database);
  colour_->setFocus();
  if (exec() != Accepted) return false;
  marks = {static_cast<ETaskColour>(colour_->currentIndex()), confirm_->isChecked()};
  return true;
}

}  // namespace velmora
