// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// JSON documents of the companion: keys in the order in which they are set, bytes that are no UTF-8 as U+FFFD.

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "app/StructureView.h"

namespace velmora {

using TJson = nlohmann::ordered_json;

TJson JsonOf(const std::optional<std::string>& text);  // null when there is none
TJson JsonOf(const TTableView& table);
// The document of `schema`, `parse` and `replay`. Without an `error` of its own it has that of the first failed table.
TJson StructureDocument(int engine, const std::string& display_name, const std::vector<TTableView>& tables,
                        const std::optional<std::string>& error);

// Writes the document of `whole`; if there is no memory for it that of `least`, which should then tell so. Gives
// whether it was the whole one.
bool PrintDocument(std::ostream& out, const std::function<TJson()>& whole, const std::function<TJson()>& least);

std::string TextOf(const TJson& document);  // on one line, with its end

}  // namespace velmora
