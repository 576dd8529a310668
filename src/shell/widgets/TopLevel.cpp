// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/widgets/TopLevel.h"

#include <QApplication>
#include <QMessageBox>
#include <algorithm>
#include <exception>

#include "shell/widgets/QtText.h"
#include "shell/widgets/Text.h"
#include "util/Errors.h"
#include "util/Lists.h"
#include "util/Version.h"

namespace velmora {

namespace {

constexpr char kReportLine[] = "exception message : ";
constexpr int kShownLines = 20;
constexpr qsizetype kShownLetters = 1500;

}  // namespace

std::string ShownMessage(const std::string& text) {
  constexpr std::size_t kLength = sizeof(kReportLine) - 1;
  for (const std::string& line : LinesOf(text))
    if (line.compare(0, kLength, kReportLine) == 0) return line.substr(kLength);
  return text;
}

QString Shortened(const QString& text, qsizetype letters) {
  QString cut = text.section(QLatin1Char('\n'), 0, kShownLines - 1).left(letters);
  return cut.size() < text.size() ? cut + QChar(0x2026) : cut;
}

QWidget* WorkingForm() {
  if (QWidget* modal = QApplication::activeModalWidget(); modal != nullptr) return modal;
  QWidgetList windows = QApplication::topLevelWidgets();
  windows.prepend(QApplication::activeWindow());
  const auto form = std::find_if(windows.begin(), windows.end(), [](const QWidget* window) {
    return window != nullptr && window->isVisible() && window->windowType() == Qt::Window &&
           window->testAttribute(Qt::WA_QuitOnClose);
  });
  return form == windows.end() ? nullptr : *form;
}

void ShowError(const std::string& text) {
  const QString message = ToQt(ShownMessage(text));
  const QString shown = Shortened(message, kShownLetters);
  QMessageBox box(QMessageBox::Critical, ToQt(kProgramTitle), shown, QMessageBox::Ok, WorkingForm());
  if (shown != message) box.setDetailedText(message);
  box.setObjectName(QStringLiteral("mbError"));
  box.setTextFormat(Qt::PlainText);
  box.setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  box.exec();
}

bool AtTopLevel(const std::function<void()>& handler) {
  std::string text;
  try {
    handler();
    return true;
  } catch (const EAbort&) {
    return false;
  } catch (const std::bad_alloc&) {
    text = FromQt(TText::tr("Out of memory"));
  } catch (const std::exception& error) {
    text = error.what();
  }
  ShowError(text);
  return false;
}

}  // namespace velmora
