// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/windows/CrashDialog.h"

#include <QApplication>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "core/Host.h"
#include "shell/widgets/QtText.h"
#include "shell/widgets/Text.h"
#include "shell/widgets/TopLevel.h"
#include "util/Addresses.h"
#include "util/Files.h"

namespace velmora {

namespace {

constexpr TText kExplained = TText::Later(
    "A fatal error has ended Velmora, or velmora-cli.\n\n"
    "The report below tells where in the program that was. It holds no passwords and no rows; names of databases, "
    "tables and files may stand in it. Nothing is sent by itself: if you can, send it to %1, with a word on what "
    "you were doing.\n\nReports stay in %2.");
constexpr char kMore[] = "\n\n----- An earlier report -----\n\n";  // of what is sent
constexpr int kColumns = 100;
constexpr int kLines = 24;

std::string FolderOf(const TCrashReport& report) { return report.file.substr(0, report.file.rfind('/')); }

QPlainTextEdit* MakeText(const std::vector<TCrashReport>& reports) {
  std::string all;
  for (const TCrashReport& report : reports) all.append(all.empty() ? "" : kMore).append(report.text);
  auto* text = new QPlainTextEdit(ToQt(all));
  text->setObjectName(QStringLiteral("meReport"));
  text->setAccessibleName(TText::tr("Crash report"));
  text->setReadOnly(true);
  text->setLineWrapMode(QPlainTextEdit::NoWrap);
  text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  const QFontMetrics metrics(text->font());
  text->setMinimumWidth(metrics.averageCharWidth() * kColumns / 2);
  text->setMinimumHeight(metrics.lineSpacing() * kLines / 3);
  return text;
}

}  // namespace

TfmCrash::TfmCrash(const std::vector<TCrashReport>& reports, QWidget* parent)
    : QDialog(parent), text_(MakeText(reports)) {
  setObjectName(QStringLiteral("fmCrash"));
  setWindowTitle(TText::tr("Crash report"));
  auto* label = new QLabel(QString(kExplained).arg(ToQt(SupportAddress()), ToQt(FolderOf(reports.front()))));
  label->setWordWrap(true);
  label->setTextFormat(Qt::PlainText);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(label);
  layout->addWidget(text_, 1);
  layout->addWidget(MakeButtons());
  const QFontMetrics metrics(text_->font());
  resize(metrics.averageCharWidth() * kColumns, metrics.lineSpacing() * kLines + label->sizeHint().height());
}

QDialogButtonBox* TfmCrash::MakeButtons() {
  auto* buttons = new QDialogButtonBox;
  const auto add = [&](const char* name, const QString& caption, QDialogButtonBox::ButtonRole role,
                       std::function<void()> handler) {
    QPushButton* button = buttons->addButton(caption, role);
    button->setObjectName(QLatin1String(name));
    button->setAutoDefault(false);
    Handle(button, &QPushButton::clicked, this, std::move(handler));
    return button;
  };
  add("butCopy", TText::tr("Copy"), QDialogButtonBox::ActionRole,
      [this] { QApplication::clipboard()->setText(text_->toPlainText()); });
  add("butSave", TText::tr("Save..."), QDialogButtonBox::ActionRole, [this] { Save(); });
  QPushButton* close = add("butClose", TText::tr("Close"), QDialogButtonBox::RejectRole, [this] { reject(); });
  close->setDefault(true);
  close->setFocus();
  return buttons;
}

void TfmCrash::Save() {
  std::string path = "velmora-crash.txt";
  if (Host().SaveFile(FromQt(TText::tr("Text file")) + "|*.txt", path))
    WriteFileText(path, FromQt(text_->toPlainText()) + "\n");
}

void OfferCrashReports(const std::string& folder, QWidget* parent) {
  const std::vector<TCrashReport> reports = folder.empty() ? std::vector<TCrashReport>() : NewCrashReports(folder);
  if (reports.empty()) return;
  auto* dialog = new TfmCrash(reports, parent);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  QObject::connect(dialog, &QDialog::finished, dialog, [reports] {
    for (const TCrashReport& report : reports) MarkAsShown(report);
  });
  dialog->show();
}

}  // namespace velmora
