// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/windows/QtHost.h"

#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QProcess>
#include <QUrl>

#include "shell/widgets/QtText.h"
#include "shell/widgets/Text.h"
#include "shell/widgets/TopLevel.h"
#include "shell/windows/Help.h"
#include "util/Errors.h"
#include "util/Lists.h"
#include "util/Text.h"
#include "util/Version.h"

namespace velmora {

namespace {

constexpr char kHelpFile[] = "Help.chm";
constexpr char kAllMasks[] = "*.*";

bool Confirm(const std::string& message, QMessageBox::StandardButton yes, QMessageBox::StandardButton no) {
  QMessageBox box(QMessageBox::Question, ToQt(kProgramTitle), ToQt(message), yes | no, WorkingForm());
  box.setObjectName(QStringLiteral("mbConfirm"));
  box.setTextFormat(Qt::PlainText);
  box.setDefaultButton(no);
  return box.exec() == yes;
}

struct TFilterPart {
  std::string caption;
  TStringList masks;
};

// Captions and masks of "Caption|*.a;*.b|Caption|*.c".
std::vector<TFilterPart> FilterParts(const std::string& filter) {
  std::vector<TFilterPart> parts;
  TStringList pieces;
  SplitText("|", filter, pieces);
  for (std::size_t i = 0; i + 1 < pieces.size(); i += 2) {
    TFilterPart part{pieces[i], {}};
    SplitText(";", pieces[i + 1], part.masks);
    parts.push_back(std::move(part));
  }
  return parts;
}

// What can be read may be called otherwise than the filter has it: workbooks end in .xls or .xlsx.
std::string WithAllFiles(const std::string& filter) {
  if (filter.find(kAllMasks) != std::string::npos) return filter;
  return filter + "|" + FromQt(TText::tr("All files")) + "|" + kAllMasks;
}

bool Choose(QFileDialog& dialog, const std::string& filter, std::string& path) {
  QStringList filters;
  for (const std::string& part : LinesOf(QtFilter(filter))) filters << ToQt(part);
  dialog.setNameFilters(filters);
  if (!path.empty()) {
    const QFileInfo info(ToQt(path));
    dialog.setDirectory(info.absolutePath());
    dialog.selectFile(info.fileName());
  }
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return false;
  path = FromQt(dialog.selectedFiles().constFirst());
  return true;
}

// An address has a scheme of more than one letter; anything else is a path.
QUrl UrlOf(const std::string& target, const std::string& folder) {
  QUrl url(ToQt(target));
  if (url.scheme().size() > 1) return url;
  const QDir base(folder.empty() ? QDir::currentPath() : ToQt(folder));
  return QUrl::fromLocalFile(base.absoluteFilePath(ToQt(target)));
}

}  // namespace

std::string QtFilter(const std::string& filter) {
  std::string text;
  for (const TFilterPart& part : FilterParts(filter)) {
    TStringList masks;
    for (const std::string& mask : part.masks) masks.push_back(mask == kAllMasks ? "*" : mask);
    text += (text.empty() ? "" : "\n") + part.caption + " (" + JoinList(masks, " ") + ")";
  }
  return text;
}

std::string FilterExtension(const std::string& filter) {
  const std::vector<TFilterPart> parts = FilterParts(filter);
  if (parts.empty() || parts.front().masks.empty()) return {};
  const std::string& mask = parts.front().masks.front();
  const std::size_t dot = mask.rfind('.');
  const std::string extension = dot == std::string::npos ? std::string() : mask.substr(dot + 1);
  return extension.find_first_of("*?") == std::string::npos ? extension : std::string();
}

TQtHost::TQtHost() = default;
TQtHost::~TQtHost() = default;

void TQtHost::ProcessMessages() {
  QCoreApplication::processEvents();
  wait_.Check();
}

bool TQtHost::ConfirmOk(const std::string& message) { return Confirm(message, QMessageBox::Ok, QMessageBox::Cancel); }
bool TQtHost::ConfirmYes(const std::string& message) { return Confirm(message, QMessageBox::Yes, QMessageBox::No); }

bool TQtHost::OpenFile(const std::string& filter, std::string& path) {
  QFileDialog dialog(WorkingForm());
  dialog.setFileMode(QFileDialog::ExistingFile);
  return Choose(dialog, WithAllFiles(filter), path);
}

bool TQtHost::SaveFile(const std::string& filter, std::string& path) {
  QFileDialog dialog(WorkingForm());
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setDefaultSuffix(ToQt(FilterExtension(filter)));
  return Choose(dialog, filter, path);
}

bool TQtHost::BrowseFolder(const std::string& title, std::string& folder) {
  QFileDialog dialog(WorkingForm(), ToQt(title), ToQt(folder));
  dialog.setFileMode(QFileDialog::Directory);
  dialog.setOption(QFileDialog::ShowDirsOnly);
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return false;
  folder = FromQt(dialog.selectedFiles().constFirst());
  return true;
}

void TQtHost::ShellOpen(const std::string& target, const std::string& parameters, const std::string& folder,
                        bool wait) {
  if (target != kHelpFile) {
    if (!OpenWithSystem(target, parameters, folder, wait))
      RaiseError(FromQt(TText::tr("Cannot open %1: no program on this system takes it").arg(ToQt(target))));
    return;
  }
  const bool there = QFileInfo::exists(ToQt(target));
  if (!there || !OpenWithSystem(target, parameters, folder, wait)) ShowHelp();
}

bool TQtHost::OpenWithSystem(const std::string& target, const std::string& parameters, const std::string& folder,
                             bool wait) {
  if (parameters.empty() && !wait) return QDesktopServices::openUrl(UrlOf(target, folder));
  QProcess process;
  process.setProgram(ToQt(target));
  process.setArguments(QProcess::splitCommand(ToQt(parameters)));
  if (!folder.empty()) process.setWorkingDirectory(ToQt(folder));
  if (!wait) return process.startDetached();
  process.start();
  return process.waitForStarted() && process.waitForFinished(-1);
}

void TQtHost::ShowHelp() {
  if (!help_) help_ = std::make_unique<TfmHelp>();
  help_->showNormal();
  help_->raise();
  help_->activateWindow();
}

}  // namespace velmora
