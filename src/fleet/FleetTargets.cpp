// SPDX-License-Identifier: GPL-3.0-or-later
#include "fleet/FleetTargets.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <utility>

#include "app/SideNames.h"
#include "engines/mysql/OfflineEngine.h"
#include "exact/run/StructureDigest.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/MySqlFacts.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kTwice[] = "%s: line %d: %s is listed in line %d already, and taken once";
constexpr char kIsReference[] = "%s: line %d: %s is the reference, and left out";
constexpr char kNoMatch[] = "no database of the server has a name like this";
constexpr char kNoSlice[] = "\"%s\" is no share: give I/N, as in 2/8, where I is from 1 to N";
constexpr std::size_t kMostSlices = 100000;

// A server that was not reached, was cut off in the login, or takes no login from this machine.
constexpr std::array kOutOfReach = {2002, 2003, 2005, 2006, 2012, 2013, 1129, 1130};

bool OfSystem(const std::string& database) {
  const std::string name = LowerText(database);
  return InList(name, {"mysql", "information_schema", "performance_schema", "sys", "ndbinfo"}) ||
         name.starts_with("velmora_scratch_");
}

// The server of the patterns that begin alike, and what it lists.
struct TListing {
  std::unique_ptr<TDBConnMySQL> server;
  std::size_t lane = 0;
  TStringList databases;
  std::string error;
  bool unreached = false;
};

std::string NameOf(TDBConn& conn) {
  std::string name;
  conn.GetDisplayName(name);
  return name;
}

class TExpansion {
 public:
  TExpansion(const std::string& path, const TSourceSettings& settings, TFleetPlace reference, const TFleetSlice& slice,
             TLanes& lanes)
      : path_(path), settings_(settings), reference_(std::move(reference)), slice_(slice), lanes_(lanes) {}

  void AskServers(const std::vector<TListedSource>& list) {
    for (const TListedSource& of : list)
      if (of.pattern.Any()) Expect(of.source);
    std::vector<TListing*> asked;
    std::vector<std::size_t> lanes;
    for (auto& [source, listing] : listings_) {
      asked.push_back(&listing);
      lanes.push_back(listing.lane);
    }
    const auto fail = [&](std::size_t piece, const std::string& reason) {
      asked[piece]->error = reason;
      asked[piece]->unreached = true;
    };
    lanes_.Run(lanes, {[&](std::size_t piece) { List(*asked[piece]); }, fail, {}});
  }

  void Take(const TListedSource& listed) {
    if (!listed.pattern.Any()) return TakeOne(listed, listed.source);
    const TListing& listing = listings_.at(listed.source);
    bool any = false;
    for (const std::string& database : listing.databases)
      if (!OfSystem(database) && listed.pattern.Matches(database)) {
        TakeOne(listed, listed.source + PercentEncoded(database));
        any = true;
      }
    if (any || !slice_.Takes(listed.shown)) return;
    result.targets.push_back({listed.source, listed.shown, listed.shown, listing.lane, true,
                              listing.error.empty() ? kNoMatch : listing.error, listing.unreached});
  }

  TFleetTargets result;

 private:
  void Expect(const std::string& source) {
    TListing& listing = listings_[source];
    if (listing.server) return;
    std::unique_ptr<TDBConn> made = MakeTarget(source + "any", settings_);
    ForgetSocketOfOthers(*made);
    listing.lane = lanes_.LaneOf(PlaceOf(*made).server);
    listing.server.reset(dynamic_cast<TDBConnMySQL*>(made.release()));
  }

  static void List(TListing& listing) {
    try {
      listing.server->ListDatabases(listing.databases);
      std::ranges::sort(listing.databases);
    } catch (const EMySqlException& error) {
      if (IsUnreachable(error)) throw EUnreachable(error.what());
      listing.error = error.what();
    }
  }

  void TakeOne(const TListedSource& listed, const std::string& source) {
    const std::unique_ptr<TDBConn> made = MakeTarget(source, settings_);
    ForgetSocketOfOthers(*made);
    const TFleetPlace place = PlaceOf(*made);
    const std::string name = NameOf(*made);
    if (place.server == reference_.server && place.database == reference_.database) {
      result.notes.push_back(Format(kIsReference, path_, listed.line, name));
      return;
    }
    const auto [first, fresh] = lines_.try_emplace({place.server, place.database}, listed.line);
    if (!fresh) {
      result.notes.push_back(Format(kTwice, path_, listed.line, name, first->second));
      return;
    }
    if (slice_.Takes(name))
      result.targets.push_back(
          {source, name, DatabaseName(*made), lanes_.LaneOf(place.server), !place.server.empty(), {}, false});
  }

  const std::string& path_;
  const TSourceSettings& settings_;
  TFleetPlace reference_;
  const TFleetSlice& slice_;
  TLanes& lanes_;
  std::map<std::string, TListing> listings_;  // by what stands before the pattern
  std::map<std::pair<std::string, std::string>, std::size_t> lines_;
};

}  // namespace

TFleetPlace PlaceOf(TDBConn& conn) {
  const auto* server = dynamic_cast<TDBConnMySQL*>(&conn);
  if (server == nullptr || dynamic_cast<TDBConnMySQLOffline*>(&conn) != nullptr) return {{}, NameOf(conn)};
  const std::string& socket = dynamic_cast<TDBConnMySQL&>(conn).GetConnectionObject().Options.Socket;
  if (!socket.empty()) return {socket, server->database()};
  const std::string host = server->server().empty() ? "localhost" : LowerText(server->server());
  return {Format("%s:%d", host, server->port() == 0 ? kMySqlPort : server->port()), server->database()};
}

bool TFleetSlice::Takes(const std::string& name) const {
  constexpr std::size_t kDigits = 15;
  constexpr int kHexadecimal = 16;
  return of == 1 || std::stoull(TextDigest(name).substr(0, kDigits), nullptr, kHexadecimal) % of == number - 1;
}

TFleetSlice ReadSlice(const std::string& text) {
  const std::size_t slash = text.find('/');
  const auto number = TryStrToInt(text.substr(0, slash));
  const auto of = slash == std::string::npos ? std::nullopt : TryStrToInt(text.substr(slash + 1));
  if (!number || !of || *number < 1 || *of < *number || *of > static_cast<std::int64_t>(kMostSlices))
    RaiseError(Format(kNoSlice, text));
  return {static_cast<std::size_t>(*number), static_cast<std::size_t>(*of)};
}

bool IsUnreachable(const EMySqlException& error) {
  return std::ranges::find(kOutOfReach, error.Number()) != kOutOfReach.end();
}

TFleetTargets ExpandTargets(const std::string& path, const std::vector<TListedSource>& list,
                            const TSourceSettings& settings, const TFleetPlace& reference, const TFleetSlice& slice,
                            TLanes& lanes) {
  TExpansion expansion(path, settings, reference, slice, lanes);
  expansion.AskServers(list);
  for (const TListedSource& listed : list) expansion.Take(listed);
  return std::move(expansion.result);
}

}  // namespace velmora
