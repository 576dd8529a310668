// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Table options: how they are read, and what each has where a text does not name it.

#include <optional>
#include <string>
#include <string_view>

#include "mysqltext/KeyText.h"
#include "mysqltext/TableText.h"

namespace velmora {

// Reads the option that begins at `at`, which moves past it. Nothing, and `at` where the fault is, for what is
// no option. `tokens` end with End.
std::optional<TTableOption> ReadTableOption(std::string_view text, TTokens tokens, std::size_t& at);

// Whether this is a flag, which has no value.
bool IsFlagOption(const TTableOption& option);

// Whether this is an engine's own option, as PAGE_COMPRESSED. They go with the engine: another one does not print them,
// and refuses to set them back.
bool IsEngineOption(const TTableOption& option);

// Whether a table that changes to `engine`, in lower case, goes on with the option, so that it can be set back.
bool OutlivesEngine(const TTableOption& option, std::string_view engine);

// What sets the option back to what it is without being named: "DEFAULT" for those of engines; nothing for those that
// have no such value, as ENGINE, DATA DIRECTORY, the character set.
std::optional<std::string_view> OptionResetValue(const TTableOption& option);

// The value as it counts: of texts what they say; words and numbers in lower case.
std::string OptionValue(const TTableOption& option);

// "NAME=value".
std::string OptionText(const TTableOption& option);

}  // namespace velmora
