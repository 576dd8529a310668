// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/widgets/Text.h"

namespace velmora {

// Without a translation the source text is shown: its plural is English.
QString TText::Counted(const char* words, std::nullptr_t, std::size_t count) {
  const QString text = tr(words, nullptr, static_cast<int>(count));
  return QString(text).replace(QLatin1String("(s)"), QLatin1String(count == 1 ? "" : "s"));
}

TText::operator QString() const { return same_ ? QString::fromUtf8(words_) : tr(words_); }

}  // namespace velmora
