// SPDX-License-Identifier: GPL-3.0-or-later
#include "persist/TaskDocument.h"

#include <iterator>
#include <utility>

#include "persist/TaskPack.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/Lists.h"
#include "xml/XMLAccess.h"

namespace velmora {

namespace {

constexpr char kNoTaskFile[] = "Invalid session file";
constexpr char kTooLarge[] = "%s is larger than a task file can be";
constexpr char kBadVersion[] = "Incompatible task version";
constexpr char kUnhandledOnOpen[] = "OpenTask: Unhandled engine %s";
constexpr char kUnhandledOnSave[] = "SaveTask: Unhandled engine %s";

constexpr char kVersionKey[] = "version";
constexpr char kVersion[] = "1.0";
constexpr char kUnhandledColour[] = "\"%s\" is no colour of a task: it must be one of %s";

// Not in every file, so that others stay as they always were.
constexpr char kDialectKey[] = "dialect";
constexpr char kColourKey[] = "colour";
constexpr char kConfirmKey[] = "confirm_database";
constexpr char kForeignKey[] = "foreign";
constexpr char kExactKey[] = "exact";

constexpr std::size_t kMaxFileSize = std::size_t{64} * 1024 * 1024;
constexpr unsigned kOwnerOnly = 0600;

struct TSideKeys {
  ETaskRole role;
  const char* engine;  // the key of the engine's name
  const char* parent;  // the keys of the engine stand below it
};
constexpr TSideKeys kReference = {ETaskRole::Reference, "reference_engine", "reference"};
constexpr TSideKeys kTarget = {ETaskRole::Target, "target_engine", "target"};

std::string PackedPart(const std::string& path) {
  std::string bytes = ReadFileBytes(path, kMaxFileSize + 1);
  if (!bytes.starts_with(kTaskMagic)) RaiseError(kNoTaskFile);
  if (bytes.size() > kMaxFileSize) RaiseError(Format(kTooLarge, path));
  return bytes.erase(0, kTaskMagic.size());
}

bool HasElement(const std::string& key) {
  TStringList elements;
  cfgGetList(key, "item", elements);
  return !elements.empty();
}

// Empty where the file has none.
std::string WishesOf(const char* key) { return HasElement(key) ? cfgGetStr(key) : std::string(); }

void ReadKey(const TSideKeys& side, std::string_view key, TEngineValues& values) {
  values.Set(key, cfgGetStr(Format("%s/%s", side.parent, key)));
}

TTaskSide ReadSide(const TSideKeys& side) {
  const std::string name = cfgGetStr(side.engine);
  TTaskSide result;
  result.engine = FindEngine(StrToEngine(name));
  if (result.engine == nullptr || !result.engine->InTask(side.role)) RaiseError(Format(kUnhandledOnOpen, name));
  const std::string_view first = result.engine->read_first;
  if (!first.empty()) ReadKey(side, first, result.values);
  for (const TEngineKey& key : result.engine->keys)
    if (key.name != first) ReadKey(side, key.name, result.values);
  for (const TEngineKey& key : result.engine->further)
    if (HasElement(Format("%s/%s", side.parent, key.name))) ReadKey(side, key.name, result.values);
  return result;
}

void WriteSide(const TSideKeys& side, TDBConn& conn) {
  std::string name;
  StrEngine(conn.GetEngine(), name);
  cfgSetStr(side.engine, name);
  const TEngineRow* engine = FindEngine(conn.GetEngine());
  if (engine == nullptr || !engine->InTask(side.role)) RaiseError(Format(kUnhandledOnSave, name));
  engine->write(conn, Format("/root/%s", side.parent), SharedDocument());
}

}  // namespace

TTaskReader::TTaskReader(const std::string& path) {
  cfgLoadText(UnpackTask(PackedPart(path)));
  if (cfgGetStr(kVersionKey) != kVersion) RaiseError(kBadVersion);
  StrToEngine(cfgGetStr(kTarget.engine));  // before the reference is looked at
}

TTaskSide TTaskReader::Reference() const { return ReadSide(kReference); }

TTaskSide TTaskReader::Target() const { return ReadSide(kTarget); }

std::optional<std::string> TTaskReader::Dialect() const {
  return HasElement(kDialectKey) ? std::optional(cfgGetStr(kDialectKey)) : std::nullopt;
}

TTaskMarks TTaskReader::Marks() const {
  TTaskMarks marks;
  if (HasElement(kColourKey)) {
    const std::string word = cfgGetStr(kColourKey);
    const std::optional<ETaskColour> colour = FindColour(word);
    const TStringList words(std::begin(kTaskColours), std::end(kTaskColours));
    if (!colour) RaiseError(Format(kUnhandledColour, word, JoinList(words, ", ")));
    marks.colour = *colour;
  }
  marks.confirm_database = HasElement(kConfirmKey) && cfgGetStr(kConfirmKey) != "N";  // the careful way in doubt
  return marks;
}

std::string TTaskReader::Foreign() const { return WishesOf(kForeignKey); }

std::string TTaskReader::Exact() const { return WishesOf(kExactKey); }

std::unique_ptr<TDBConn> MakeTaskEngine(const TTaskSide& side, const TEngineClients& clients) {
  return MakeEngine(*side.engine, side.values, clients);
}

TTaskValues ReadTaskValues(const std::string& path) {
  const TTaskReader reader(path);
  TTaskSide reference = reader.Reference();
  TTaskSide target = reader.Target();
  return {std::move(reference), std::move(target), reader.Dialect(), reader.Marks(), reader.Foreign(), reader.Exact()};
}

void WriteTask(const std::string& path, TDBConn& reference, TDBConn& target, const std::optional<std::string>& dialect,
               const TTaskMarks& marks, const std::string& foreign, const std::string& exact) {
  cfgReset();
  cfgSetStr(kVersionKey, kVersion);
  WriteSide(kReference, reference);
  WriteSide(kTarget, target);
  if (dialect) cfgSetStr(kDialectKey, *dialect);
  if (marks.colour != ETaskColour::None) cfgSetStr(kColourKey, ColourWord(marks.colour));
  if (marks.confirm_database) cfgSetBool(kConfirmKey, true);
  if (!foreign.empty()) cfgSetStr(kForeignKey, foreign);
  if (!exact.empty()) cfgSetStr(kExactKey, exact);
  const std::string bytes = std::string(kTaskMagic) + PackTask(cfgText());
  WriteFileText(path, bytes, false, kOwnerOnly);
}

}  // namespace velmora
