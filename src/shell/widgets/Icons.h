// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QIcon>
#include <QString>

namespace velmora {

// An icon of ours by the name of its file. Its lines follow the palette's text colour, so that it can be read on light
// and on dark windows; what has a meaning by its colour keeps it.
QIcon Icon(const QString& name);

// The program's own icon, in its colours.
QIcon ProgramIcon();

}  // namespace velmora
