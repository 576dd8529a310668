// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/windows/Help.h"

#include <QAction>
#include <QKeySequence>
#include <QListWidget>
#include <QSignalBlocker>
#include <QSplitter>
#include <QTextBrowser>
#include <QToolBar>
#include <QUrl>
#include <algorithm>
#include <iterator>

#include "shell/widgets/Icons.h"
#include "shell/widgets/LinkColour.h"
#include "shell/widgets/QtText.h"
#include "shell/widgets/Text.h"
#include "shell/widgets/TopLevel.h"

namespace velmora {

namespace {

struct TPage {
  const char* name;
  const char* title;
};

// The titles are in the language of the pages.
constexpr TPage kHelpPages[] = {
    {"index", "What Velmora does"}, {"task", "A new task"},   {"analysis", "Analysis"},
    {"differences", "Differences"}, {"script", "The script"}, {"failed-run", "When a run fails"},
    {"task-files", "Task files"},   {"exact", "Dialects"},    {"mapping", "A reference that is not MySQL"},
    {"options", "Options"},         {"keyboard", "Keyboard"}, {"engines", "Kinds of database"},
};

constexpr int kPictureSize = 16;
constexpr char kStyle[] =
    "h1 { font-size: x-large; margin-top: 0; margin-bottom: 10px; }"
    "h2 { font-size: large; margin-top: 16px; margin-bottom: 6px; }"
    "p, ul, ol, table { margin-top: 6px; margin-bottom: 6px; }"
    "li { margin-bottom: 4px; }"
    "td, th { padding: 3px 16px 3px 0; text-align: left; }";

QUrl Address(const TPage& page) { return QUrl(QStringLiteral("qrc:/help/%1.html").arg(ToQt(page.name))); }

int RowOf(const QUrl& source) {
  const auto* page =
      std::ranges::find_if(kHelpPages, [&](const TPage& row) { return source.path() == Address(row).path(); });
  return page == std::end(kHelpPages) ? 0 : static_cast<int>(page - kHelpPages);
}

// Pictures in a page are icons of the set, in the colours of the moment.
class TPageView final : public QTextBrowser {
 public:
  QVariant loadResource(int type, const QUrl& name) override {
    if (type != QTextDocument::ImageResource) return QTextBrowser::loadResource(type, name);
    return Icon(name.fileName()).pixmap(QSize(kPictureSize, kPictureSize), devicePixelRatioF());
  }
};

}  // namespace

TfmHelp::TfmHelp(QWidget* parent) : QMainWindow(parent, Qt::Window) {
  setObjectName(QStringLiteral("fmHelp"));
  setWindowTitle(TText::tr("Velmora Help"));
  setWindowIcon(ProgramIcon());
  setAttribute(Qt::WA_QuitOnClose, false);
  pages_ = new QListWidget;
  pages_->setObjectName(QStringLiteral("lsPages"));
  pages_->setSpacing(3);
  for (const TPage& page : kHelpPages) pages_->addItem(ToQt(page.title));
  text_ = new TPageView;
  text_->setObjectName(QStringLiteral("tbText"));
  text_->setOpenExternalLinks(false);
  text_->document()->setDocumentMargin(16);
  auto* halves = new QSplitter;
  halves->addWidget(pages_);
  halves->addWidget(text_);
  halves->setStretchFactor(1, 1);
  halves->setChildrenCollapsible(false);
  halves->setSizes({180, 620});
  setCentralWidget(halves);
  resize(800, 600);
  AddCommands();

  Handle(pages_, &QListWidget::currentRowChanged, this, [this] { ShowRow(pages_->currentRow()); });
  Handle(text_, &QTextBrowser::historyChanged, this, [this] { FollowPage(); });
  ShowRow(0);
  text_->setFocus();
}

void TfmHelp::AddCommands() {
  auto* bar = addToolBar(TText::tr("Help pages"));
  bar->setObjectName(QStringLiteral("barPages"));
  bar->setMovable(false);
  bar->toggleViewAction()->setVisible(false);
  bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  auto* back = bar->addAction(Icon(QStringLiteral("go-back")), TText::tr("Back"));
  back->setShortcuts(QKeySequence::Back);
  back->setEnabled(false);
  auto* forward = bar->addAction(Icon(QStringLiteral("go-forward")), TText::tr("Forward"));
  forward->setShortcuts(QKeySequence::Forward);
  forward->setEnabled(false);
  Handle(back, &QAction::triggered, this, [this] { text_->backward(); });
  Handle(forward, &QAction::triggered, this, [this] { text_->forward(); });
  connect(text_, &QTextBrowser::backwardAvailable, back, &QAction::setEnabled);
  connect(text_, &QTextBrowser::forwardAvailable, forward, &QAction::setEnabled);

  auto* shut = new QAction(this);
  shut->setShortcut(Qt::Key_Escape);
  addAction(shut);
  Handle(shut, &QAction::triggered, this, [this] { close(); });
}

void TfmHelp::ShowRow(int row) {
  const QString links = QStringLiteral(" a { color: %1; }").arg(LinkColour(palette()));
  text_->document()->setDefaultStyleSheet(ToQt(kStyle) + links);
  text_->setSource(Address(kHelpPages[row]));
}

// The list goes where links and history lead.
void TfmHelp::FollowPage() {
  const QSignalBlocker quiet(pages_);
  pages_->setCurrentRow(RowOf(text_->source()));
}

}  // namespace velmora
