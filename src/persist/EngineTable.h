// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The one table of engine makers: what each engine's keys are, where it may stand in a task, and how it is made of the
// values of its keys. Task files and sources on a command line both go by it.

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "core/DBConn.h"
#include "formats/port/Provider.h"
#include "mysqlclient/MyConnection.h"
#include "persist/EngineValues.h"

namespace velmora {

class TXMLAccess;

// What engines are made with. Where a call is empty, the usual client is taken.
struct TEngineClients {
  // A client with the options that `own` has of kMyOptionKeys.
  std::function<std::unique_ptr<TMyConnection>(const TEngineValues& own)> NewMyConnection;
  TOLEDBProviderMaker NewOLEDBProvider = {};
};

enum class ETaskRole { Reference, Target };

struct TEngineRow {
  int engine;                                // its name: StrEngine
  std::span<const TEngineKey> keys;          // in the order in which they are written
  std::span<const TEngineKey> further = {};  // after these, and only where they are given
  bool reference;                            // a task may hold it as this
  bool target;
  std::string_view read_first = {};  // the key that is read before the others
  std::unique_ptr<TDBConn> (*make)(const TEngineValues& values, const TEngineClients& clients);
  void (*write)(TDBConn& conn, const std::string& path, TXMLAccess& store);

  bool InTask(ETaskRole role) const { return role == ETaskRole::Reference ? reference : target; }
  const TEngineKey* FindKey(std::string_view name) const;  // further ones too, ignoring case; null when there is none
  const TEngineKey* SecretKey() const;                     // the password's; null for an engine without one
};

// Whether values of the text engine stand for columns of fixed width: an empty separator does, unless the value
// kDelimited is true. Deliberate: that value is no key, so that a task file brings a delimited source without a
// separator back as one of fixed width.
bool HasFixedColumns(const TEngineValues& values);
inline constexpr std::string_view kDelimited = "delimited";

// Ordered by number. The MySQL script engine has a row and no name.
std::span<const TEngineRow> EngineTable();
const TEngineRow* FindEngine(int engine);             // null when there is none
const TEngineRow* FindEngine(std::string_view name);  // ignoring case; null when there is none
std::string EngineName(const TEngineRow& row);        // empty for the script engine

// Gives every key that has no value its standard one.
void FillStandardValues(const TEngineRow& row, TEngineValues& values);

// An engine, not connected, of values for all keys of its row; further ones may be among them. Raises EConvertError for
// a port that is no integer, and for a further value that its key cannot have.
std::unique_ptr<TDBConn> MakeEngine(const TEngineRow& row, const TEngineValues& values,
                                    const TEngineClients& clients = {});

}  // namespace velmora
