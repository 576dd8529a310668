// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>
#include <QTranslator>
#include <memory>
#include <vector>

namespace velmora {

// The first language of a list, by names such as "de-AT", that the windows have a translation for, in force as long as
// this object lives: for texts of ours, and for those of Qt and of the SQL editor where these are installed. None for a
// list that English comes first in, which needs no translation.
class TTranslation {
 public:
  explicit TTranslation(const QStringList& languages);

  QString Language() const { return language_; }  // "de"; empty for English

 private:
  bool Load(const QString& catalogue, const QString& folder);

  QString language_;
  std::vector<std::unique_ptr<QTranslator>> loaded_;
};

}  // namespace velmora
