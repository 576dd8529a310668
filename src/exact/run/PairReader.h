// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Reads the creation texts of both sides, in turn, so that servers which are read ahead work at the same time.

#include <map>
#include <string>
#include <unordered_set>
#include <vector>

#include "core/DBConn.h"
#include "exact/compare/Collations.h"
#include "exact/compare/ServerLanguage.h"
#include "exact/objects/ObjectChanges.h"
#include "exact/plan/Plan.h"
#include "exact/run/Selection.h"
#include "exact/run/TextMaker.h"
#include "sync/Progress.h"
#include "util/Lists.h"

namespace velmora {

inline constexpr char kReferenceSide[] = "reference";
inline constexpr char kTargetSide[] = "target";

struct TSkippedTable {
  std::string side;  // one of these
  std::string table;
  std::string reason;
  bool unread = false;  // nothing of it is known
};

// Of a server: kinds of which its login may not see all there is, so that nobody knows what else there is.
struct TKindsNotSeen {
  std::string side;          // one of these
  TStringList kinds;         // "table", "view", "event", ...
  std::string Text() const;  // "Not read: triggers, events of the target, as its login may not see all of them"
};

struct TReadSide {
  // Tables to compare. One whose text is the same on both sides is in neither schema, unless it refers to one that may
  // change: then its foreign keys may stand in the way.
  TSchema schema;
  std::map<std::string, std::string> texts;  // of all tables, as the server prints them
};

struct TReadPair {
  TReadSide reference;
  TReadSide target;
  std::vector<TSkippedTable> skipped;  // in neither schema
  TStringList not_followed;            // statements of a script that may have made or changed tables unseen
  std::vector<TKindsNotSeen> not_seen;
  TStringList left_alone;           // a line for each object that is not handled
  bool case_counts = true;          // in names of tables, to the target's server
  TServerPair servers;              // of sides that are servers; they differ only where both are
  bool reference_left_out = false;  // the selection leaves out tables that the reference has
  bool objects_alone = false;       // a script has no tables, but objects: then those of the target are no difference
  TLeftOut left_out;                // by the selection; of differences none yet
  bool put_aside = false;           // an object is not among those below, as it stands where there is a table
  // Of what stands beside tables: none where a reference's texts are made, which says nothing of them.
  TDatabaseObjects wanted_objects;
  TDatabaseObjects target_objects;
  // Of a reference whose texts were made.
  std::vector<TUnmadeElement> unmade;
  std::vector<TUnmadeElement> accepted;
  std::vector<TMadeColumn> made;
  TStringList made_log;
};

// Both sides are connected and prepared. `table_under_way` follows the reading. A table that cannot be read or taken
// apart is skipped; an error that leaves a side without a connection passes on, and so does one of a side that gives no
// creation texts, unless it is the reference and `maker`, otherwise null, makes them. The reference's texts name
// collations of the target in place of those that `collations` maps. What `selection` leaves out is not read.
// A side that is a file is one of the server that the wishes name, or else of the other side's.
struct TReadWishes {
  const TCollationMap& collations;
  const TSelection& selection;
  const std::string& reference_version;  // of a file; empty for none
  const std::string& target_version;     // likewise
};
void ReadPair(TDBConn& reference, TDBConn& target, const TReadWishes& wishes, TProgress& progress,
              std::string& table_under_way, TTextMaker* maker, TReadPair& pair);

// What has to be changed in `target`: obsolete tables, changes within tables, new tables. Looks at the tables `only`,
// or at all for null.
using TTableNames = std::unordered_set<std::string>;
std::vector<TChange> SchemaChanges(const TSchema& reference, const TSchema& target, TEquivalenceUse& use,
                                   const TTableNames* only = nullptr);
TStringList DroppedTables(const std::vector<TChange>& changes);

}  // namespace velmora
