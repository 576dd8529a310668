// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/windows/ComparisonDialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

#include "shell/widgets/Named.h"
#include "shell/widgets/Text.h"
#include "shell/widgets/TopLevel.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr TText kPurpose = TText::Later(
    "What the exact dialect compares, and how it writes and runs what differs. Where a field takes several lines, each "
    "stands on its own. All of it is kept when the task is saved.");
constexpr char kFault[] = "%s: %s";
constexpr int kLines = 3;    // of a field for several
constexpr int kWidth = 560;  // of the dialog, in pixels
constexpr int kHeight = 480;
constexpr int kGap = 8;  // below each field

QString Shown(std::string_view text) { return ToQt(std::string(text)); }

QWidget* FieldOf(const TExactOption& option) {
  const std::string name = "opt_" + std::string(option.word);
  if (option.argument.empty()) return Named(new QCheckBox(Shown(option.caption)), name.c_str());
  if (!option.many) return Named(new QLineEdit, name.c_str());
  auto* lines = Named(new QPlainTextEdit, name.c_str());
  lines->setTabChangesFocus(true);
  const int frame = 2 * (lines->frameWidth() + static_cast<int>(lines->document()->documentMargin()));
  lines->setFixedHeight(lines->fontMetrics().lineSpacing() * kLines + frame);
  return lines;
}

TStringList LinesIn(const QWidget& field) {
  if (const auto* box = qobject_cast<const QCheckBox*>(&field))
    return box->isChecked() ? TStringList{std::string()} : TStringList();
  QString text;
  if (const auto* many = qobject_cast<const QPlainTextEdit*>(&field)) text = many->toPlainText();
  if (const auto* line = qobject_cast<const QLineEdit*>(&field)) text = line->text();
  TStringList all;
  TStringList lines;
  SplitText("\n", FromQt(text), all);
  for (const std::string& line : all)
    if (!Trim(line).empty()) lines.push_back(Trim(line));
  return lines;
}

void Show(QWidget& field, const TStringList& arguments) {
  if (auto* box = qobject_cast<QCheckBox*>(&field)) return box->setChecked(!arguments.empty());
  const QString text = ToQt(JoinList(arguments, "\n"));
  if (auto* many = qobject_cast<QPlainTextEdit*>(&field)) return many->setPlainText(text);
  if (auto* line = qobject_cast<QLineEdit*>(&field)) line->setText(text);
}

QLabel* Caption(std::string_view text, QWidget* field) {
  auto* label = new QLabel(Shown(text));
  label->setBuddy(field);
  return label;
}

QLabel* Small(std::string_view text) {
  auto* label = new QLabel(Shown(text));
  label->setWordWrap(true);
  label->setForegroundRole(QPalette::PlaceholderText);
  return label;
}

}  // namespace

TfmComparison::TfmComparison(QWidget* parent) : QDialog(parent) {
  setObjectName(ToQt("fmComparison"));
  setWindowTitle(TText::tr("Comparison"));
  auto* purpose = new QLabel(kPurpose);
  purpose->setWordWrap(true);
  auto* page = new QWidget;
  auto* form = new QVBoxLayout(page);
  for (const TExactOption& option : ExactOptions()) {
    QWidget* field = fields_.emplace_back(FieldOf(option));
    field->setAccessibleDescription(Shown(option.help));
    if (!option.argument.empty()) form->addWidget(Caption(option.caption, field));
    form->addWidget(field);
    form->addWidget(Small(option.help));
    form->addSpacing(kGap);
  }
  form->addStretch();
  auto* scroll = new QScrollArea;
  scroll->setWidget(page);
  scroll->setWidgetResizable(true);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  QPushButton* ok = Named(buttons->button(QDialogButtonBox::Ok), "butOK");
  QPushButton* cancel = Named(buttons->button(QDialogButtonBox::Cancel), "butCancel");
  ok->setDefault(true);
  Handle(ok, &QPushButton::clicked, this, [this] {
    entered_ = Entered();
    accept();
  });
  Handle(cancel, &QPushButton::clicked, this, [this] { reject(); });
  auto* column = new QVBoxLayout(this);
  column->addWidget(purpose);
  column->addWidget(scroll, 1);
  column->addWidget(buttons);
  resize(kWidth, kHeight);
}

TExactWishes TfmComparison::Entered() const {
  TExactWishes wishes;
  const auto options = ExactOptions();
  for (std::size_t i = 0; i < options.size(); ++i) {
    try {
      for (const std::string& argument : LinesIn(*fields_[i])) options[i].take(wishes, argument);
    } catch (const EVelmora& error) {
      fields_[i]->setFocus();
      RaiseError(Format(kFault, std::string(options[i].caption), error.what()));
    }
  }
  return wishes;
}

bool TfmComparison::Edit(TExactWishes& wishes) {
  const auto options = ExactOptions();
  for (std::size_t i = 0; i < options.size(); ++i) Show(*fields_[i], options[i].given(wishes));
  fields_.front()->setFocus();
  if (exec() != Accepted || entered_ == wishes) return false;
  wishes = entered_;
  return true;
}

}  // namespace velmora
