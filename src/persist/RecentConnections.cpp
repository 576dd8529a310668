// SPDX-License-Identifier: GPL-3.0-or-later
#include "persist/RecentConnections.h"

#include <filesystem>
#include <utility>

#include "persist/TaskPack.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/MySqlFacts.h"
#include "xml/XMLAccess.h"

namespace velmora {

namespace {

constexpr std::string_view kMagic = "VC10";
constexpr char kPlace[] = "/root/connection%d/%s";
constexpr char kEngineKey[] = "engine";
constexpr std::size_t kMaxFileSize = std::size_t{1024} * 1024;
constexpr unsigned kOwnerOnly = 0600;

template <class Visit>
void ForEachKey(const TEngineRow& engine, Visit visit) {
  for (const std::span<const TEngineKey> keys : {engine.keys, engine.further})
    for (const TEngineKey& key : keys) visit(key);
}

// The values that the engine's keys have, as far as they are to be kept.
TEngineValues Kept(const TEngineRow& engine, const TEngineValues& values, bool with_secrets) {
  TEngineValues kept;
  ForEachKey(engine, [&](const TEngineKey& key) {
    const bool secret = key.kind == EKeyKind::Secret;
    if (values.Has(key.name) && (with_secrets || !secret)) kept.Set(key.name, values.Text(key.name));
  });
  return kept;
}

bool HasElement(const TXMLAccess& store, const std::string& path) {
  TStringList elements;
  store.xmlGetList(path, "item", elements);
  return elements.size() == 1;
}

void Put(TXMLAccess& store, std::size_t number, const TRecentConnection& connection) {
  store.xmlSetVal(Format(kPlace, number, kEngineKey), EngineName(*connection.engine));
  ForEachKey(*connection.engine, [&](const TEngineKey& key) {
    if (connection.values.Has(key.name))
      store.xmlSetVal(Format(kPlace, number, key.name), connection.values.Text(key.name));
  });
}

// Not with values that XML cannot hold.
bool CanBePut(const TRecentConnection& connection) try {
  TXMLAccess store;
  Put(store, 1, connection);
  return true;
} catch (const EVelmora&) {
  return false;
}

TRecentConnection Got(const TXMLAccess& store, std::size_t number) {
  TRecentConnection connection;
  const std::string engine = Format(kPlace, number, kEngineKey);
  if (HasElement(store, engine)) connection.engine = FindEngine(store.xmlGetVal(engine));
  if (connection.engine == nullptr) return connection;
  ForEachKey(*connection.engine, [&](const TEngineKey& key) {
    const std::string path = Format(kPlace, number, key.name);
    if (HasElement(store, path)) connection.values.Set(key.name, store.xmlGetVal(path));
  });
  return connection;
}

}  // namespace

bool SameConnection(const TEngineRow& engine, const TEngineValues& a, const TEngineValues& b, std::string_view but) {
  bool same = true;
  ForEachKey(engine, [&](const TEngineKey& key) {
    if (key.kind != EKeyKind::Secret && key.name != but) same = same && a.Text(key.name) == b.Text(key.name);
  });
  return same;
}

std::string ConnectionCaption(const TRecentConnection& connection) {
  const TEngineValues& values = connection.values;
  const std::string port = values.Text("port");
  const bool usual = port.empty() || port == "0" || port == Format("%d", kMySqlPort);
  std::string caption = values.Text("database");
  caption += (caption.empty() ? "" : " on ") + values.Text("server") + (usual ? "" : ":" + port);
  if (const std::string socket = values.Text("socket"); !socket.empty()) caption += ", " + socket;
  const std::string user = values.Text("username");
  return user.empty() ? caption : Format("%s (%s)", caption, user);
}

TRecentConnections::TRecentConnections(std::string file) : file_(std::move(file)) {
  if (!file_.empty()) Read();
}

void TRecentConnections::Add(const TEngineRow& engine, const TEngineValues& values, bool with_secrets) {
  std::erase_if(all_, [&](const TRecentConnection& known) {
    return known.engine == &engine && SameConnection(engine, known.values, values);
  });
  const TRecentConnection latest = {&engine, Kept(engine, values, with_secrets)};
  if (CanBePut(latest)) all_.insert(all_.begin(), latest);
  if (all_.size() > kRecentConnections) all_.resize(kRecentConnections);
  Write();
}

void TRecentConnections::Forget(std::size_t index) {
  all_.erase(all_.begin() + static_cast<std::ptrdiff_t>(index));
  Write();
}

void TRecentConnections::Read() try {
  std::string bytes = ReadFileBytes(file_, kMaxFileSize);
  if (!bytes.starts_with(kMagic)) return;
  TXMLAccess store;
  store.xmlLoadText(UnpackTask(bytes.erase(0, kMagic.size())), false);
  for (std::size_t number = 1; number <= kRecentConnections; ++number)
    if (TRecentConnection connection = Got(store, number); connection.engine != nullptr)
      all_.push_back(std::move(connection));
} catch (const EVelmora&) {  // Deliberate: a list of what was before must not keep anybody from working
}

void TRecentConnections::Write() const try {
  if (file_.empty()) return;
  TXMLAccess store;
  for (std::size_t i = 0; i < all_.size(); ++i) Put(store, i + 1, all_[i]);
  std::filesystem::create_directories(std::filesystem::path(file_).parent_path());
  WriteFileText(file_, std::string(kMagic) + PackTask(store.xmlGetText()), false, kOwnerOnly);
} catch (const std::exception&) {  // Deliberate: likewise
}

}  // namespace velmora
