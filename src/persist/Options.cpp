// SPDX-License-Identifier: GPL-3.0-or-later
#include "persist/Options.h"

#include <string_view>
#include <variant>

namespace velmora {

namespace {

template <class Value, class Standard = Value>
struct TOptionField {
  Value TOptions::*member;
  Standard standard;
};

struct TOptionKey {
  std::string_view name;
  std::variant<TOptionField<bool>, TOptionField<int>, TOptionField<std::string, std::string_view>> field;
};

using TSwitch = TOptionField<bool>;
using TNumberField = TOptionField<int>;
using TTextField = TOptionField<std::string, std::string_view>;

// In the order of loading and saving.
constexpr TOptionKey kOptionKeys[] = {
    {"DropExtraColumns", TSwitch{&TOptions::DropExtraColumns, false}},
    {"DropExtraIndices", TSwitch{&TOptions::DropExtraIndices, false}},
    {"DropExtraConstraints", TSwitch{&TOptions::DropExtraConstraints, false}},
    {"DropExtraTables", TSwitch{&TOptions::DropExtraTables, false}},
    {"SyncRunUnprompted", TSwitch{&TOptions::SyncRunUnprompted, false}},
    {"ConnectOnStartup", TSwitch{&TOptions::ConnectOnStartup, false}},
    {"ScriptToClipboard", TSwitch{&TOptions::ScriptToClipboard, false}},
    {"AllowTblTypeChg", TSwitch{&TOptions::AllowTblTypeChg, true}},
    {"UseBackticks", TSwitch{&TOptions::UseBackticks, false}},
    {"VerboseLog", TSwitch{&TOptions::VerboseLog, false}},
    {"SelectSyncTables", TSwitch{&TOptions::SelectSyncTables, true}},
    {"NoForeignKeyChecks", TSwitch{&TOptions::NoForeignKeyChecks, false}},
    {"LogFontName", TTextField{&TOptions::LogFontName, "Tahoma"}},
    {"LogFontSize", TNumberField{&TOptions::LogFontSize, 8}},
    {"ScriptFontName", TTextField{&TOptions::ScriptFontName, "Courier New"}},
    {"ScriptFontSize", TNumberField{&TOptions::ScriptFontSize, 9}},
};

bool Loaded(const TOptionStore& store, const std::string& name, bool standard) {
  return OptGetBool(store, name, standard);
}
int Loaded(const TOptionStore& store, const std::string& name, int standard) {
  return OptGetInt(store, name, standard);
}
std::string Loaded(const TOptionStore& store, const std::string& name, std::string_view standard) {
  return OptGetStr(store, name, std::string(standard));
}

void Store(TOptionStore& store, const std::string& name, bool value) { OptSetBool(store, name, value); }
void Store(TOptionStore& store, const std::string& name, int value) { OptSetInt(store, name, value); }
void Store(TOptionStore& store, const std::string& name, const std::string& value) { OptSetStr(store, name, value); }

}  // namespace

TOptions::TOptions() {
  for (const TOptionKey& key : kOptionKeys)
    std::visit([this](const auto& field) { this->*field.member = field.standard; }, key.field);
}

TOptions LoadOptions(const TOptionStore& store) {
  TOptions options;
  for (const TOptionKey& key : kOptionKeys) {
    const auto load = [&](const auto& field) {
      options.*field.member = Loaded(store, std::string(key.name), field.standard);
    };
    std::visit(load, key.field);
  }
  return options;
}

void SaveOptions(const TOptions& options, TOptionStore& store) {
  for (const TOptionKey& key : kOptionKeys)
    std::visit([&](const auto& field) { Store(store, std::string(key.name), options.*field.member); }, key.field);
  store.Flush();
}

}  // namespace velmora
