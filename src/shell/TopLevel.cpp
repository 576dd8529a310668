#include "shell/TopLevel.h"

#include <QApplication>
#include <QMessageBox>
#include <exception>

#include "shell/QtText.h"
#include "util/Errors.h"
#include "util/Lists.h"
#include "util/Version.h"

namespace velmora {

namespace {

constexpr char kReportLine[] = "exception message : ";

}  // namespace

std::string ShownMessage(const std::string& text) {
  constexpr std::size_t kLength = sizeof(kReportLine) - 1;
  for (const std::string& line : LinesOf(text))
    if (line.compare(0, kLength, kReportLine) == 0) return line.substr(kLength);
  return text;
}

void ShowError(const std::string& text) {
  QMessageBox box(QMessageBox::Critical, ToQt(kProgramTitle), ToQt(ShownMessage(text)), QMessageBox::Ok,
                  QApplication::activeWindow());
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
    text = "Out of memory";
  } catch (const std::exception& error) {
    text = error.what();
  }
  ShowError(text);
  return false;
}

}  // namespace velmora
