// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/widgets/Icons.h"

#include <QApplication>
#include <QFile>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QSvgRenderer>

// At global scope: the macro declares a function there.
static void InitResources() { Q_INIT_RESOURCE(shell); }

namespace velmora {

namespace {

QByteArray Source(const QString& name) {
  [[maybe_unused]] static const bool ready = [] {
    InitResources();
    return true;
  }();
  QFile file(QStringLiteral(":/icons/%1.svg").arg(name));
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Draws at the size that is asked for, in the colours of the moment: a change of theme needs no new icons.
class TSvgEngine final : public QIconEngine {
 public:
  explicit TSvgEngine(QByteArray source) : source_(std::move(source)) {}

  void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State /*state*/) override {
    const bool off = mode == QIcon::Disabled;
    const QColor line = QApplication::palette().color(QPalette::Active, QPalette::WindowText);
    QSvgRenderer renderer(QByteArray(source_).replace("currentColor", line.name().toLatin1()));
    if (off) painter->setOpacity(0.4);
    renderer.render(painter, rect);
  }
  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
    QPixmap pixmap(size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    paint(&painter, QRect(QPoint(0, 0), size), mode, state);
    return pixmap;
  }
  QIconEngine* clone() const override { return new TSvgEngine(source_); }

 private:
  QByteArray source_;
};

}  // namespace

QIcon Icon(const QString& name) { return QIcon(new TSvgEngine(Source(name))); }

QIcon ProgramIcon() { return Icon(QStringLiteral("velmora")); }

}  // namespace velmora
