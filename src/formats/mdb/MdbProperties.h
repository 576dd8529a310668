// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Properties of a table and its columns, as the column LvProp of a Jet database's catalog keeps them.

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

using TMdbTextDecoder = std::function<std::optional<std::string>(std::string_view stored)>;

// By column, of the table itself under the empty name, then by property. Texts as they are, truth values as "yes" and
// "no", others left out.
using TMdbProperties = std::map<std::string, std::map<std::string, std::string>>;

// Nothing where the bytes do not fit together.
std::optional<TMdbProperties> ReadMdbProperties(std::string_view stored, const TMdbTextDecoder& text);

}  // namespace velmora
