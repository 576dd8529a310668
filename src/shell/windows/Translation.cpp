// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/windows/Translation.h"

#include <QCoreApplication>
#include <QLibraryInfo>

// At global scope: the macro declares a function there.
static void InitTranslations() { Q_INIT_RESOURCE(translations); }

namespace velmora {

TTranslation::TTranslation(const QStringList& languages) {
  InitTranslations();
  for (const QString& name : languages) {
    language_ = name.section(QLatin1Char('-'), 0, 0).section(QLatin1Char('_'), 0, 0);
    if (language_ == QLatin1String("en") || language_ == QLatin1String("C")) break;
    if (!Load(QStringLiteral("velmora"), QStringLiteral(":/translations"))) continue;
    // Only beside ours: a window speaks one language.
    for (const char* library : {"qtbase", "qscintilla"})
      Load(QLatin1String(library), QLibraryInfo::path(QLibraryInfo::TranslationsPath));
    return;
  }
  language_.clear();
}

bool TTranslation::Load(const QString& catalogue, const QString& folder) {
  auto translator = std::make_unique<QTranslator>();
  if (!translator->load(catalogue + QLatin1Char('_') + language_, folder)) return false;
  QCoreApplication::installTranslator(translator.get());
  loaded_.push_back(std::move(translator));
  return true;
}

}  // namespace velmora
