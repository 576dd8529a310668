// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A provider over a reader of files. It runs the statements that the engines send, and no others: there is no SQL
// engine here.

#include <memory>
#include <string>

#include "formats/port/FileReader.h"
#include "formats/port/Provider.h"

namespace velmora {

// `create` makes the empty file; where it is empty, CreateDataSource raises.
std::unique_ptr<TOLEDBProvider> NewFileProvider(TFileReaderMaker open, std::function<void()> create = {});

}  // namespace velmora
