// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Texts on their way between the library, where they are bytes in UTF-8, and Qt.

#include <QByteArray>
#include <QString>
#include <string>
#include <string_view>

namespace velmora {

inline QString ToQt(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

inline std::string FromQt(const QString& text) { return text.toStdString(); }

}  // namespace velmora
