// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The Firebird client library, which is the user's own: it is looked for when a database connects, so that whoever
// has no such databases needs nothing of it. Its headers alone are needed to build.

#include <string>

namespace Firebird {  // NOLINT(readability-identifier-naming): the library named it
class IMaster;
}

namespace velmora {

inline constexpr char kFirebirdLibrary[] = "libfbclient.so.2";  // of Firebird 3 and later

// What all calls of the library go through; `file` is for the system's loader. It stays loaded to the end of the
// program. Raises a message that says what to install where there is no such library, or only that of an older release.
Firebird::IMaster& LoadFirebirdLibrary(const std::string& file = kFirebirdLibrary);

}  // namespace velmora
