// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/plan/LockPlan.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <utility>

#include "exact/compare/GeneratedKey.h"
#include "exact/plan/PlanApply.h"
#include "exact/plan/PlanClauses.h"
#include "exact/plan/StatementLocks.h"
#include "mysqltext/ColumnParts.h"
#include "mysqltext/KeyText.h"
#include "util/Errors.h"
#include "util/Text.h"

namespace velmora {

namespace {

using EChange = ELockChange;
using TClauses = std::vector<TLockClause>;

bool IsAlter(const TPlanStatement& statement) {
  return statement.object.empty() && statement.text.starts_with("alter table ");
}

bool Has(const TLockClause& clause, EChange change) {
  return std::ranges::find(clause.changes, change) != clause.changes.end();
}

bool HasName(TTokens tokens, const std::string& name) {
  return std::ranges::any_of(tokens,
                             [&name](const TToken& token) { return IsName(token) && SameText(NameOf(token), name); });
}

bool Drops(const TLockClause& clause, EElement kind, const std::string& name) {
  const std::string_view word = kind == EElement::Column ? "column" : IsKey(kind) ? "key" : "constraint";
  return clause.text.starts_with("drop ") && clause.word == word && SameText(clause.name, name);
}

// --- One statement in several

// Clauses of one statement in the order of the statements that they may become.
class TSplit {
 public:
  // `refers`: a foreign key needs one of the table's keys.
  TSplit(const TClauses& clauses, const TTableText& table, const TServerTraits& server, bool refers)
      : clauses_(clauses), table_(table), server_(server), refers_(refers) {}

  // One list where nothing is won, or nobody knows.
  std::vector<TClauses> Pieces() {
    std::vector<TClauses> whole = {clauses_};
    const ELockClass together = ClassOfClauses(clauses_, table_, server_);
    if (clauses_.size() < 2 || together == ELockClass::Unknown) return whole;
    ELockClass most = ELockClass::None;
    for (const TLockClause& clause : clauses_) most = std::max(most, Alone(clause));
    if (together <= most) return whole;
    Sort(most >= ELockClass::Rebuild);
    return MayBeApart() && LeadsToTheSame() ? pieces_ : whole;
  }

 private:
  ELockClass Alone(const TLockClause& clause) const { return ClassOfClauses({clause}, table_, server_); }

  // Where a clause needs the table anew all the others come along; virtual columns alone would make it a copy.
  void Sort(bool anew) {
    enum EPiece { kDropped, kCharset, kInstant, kRest, kVirtual, kKeys, kCount };
    std::array<TClauses, kCount> sorted;
    for (const TLockClause& clause : clauses_) {
      EPiece piece = clause.sets_charset ? kCharset : Alone(clause) == ELockClass::Instant ? kInstant : kKeys;
      if (anew) piece = kRest;
      if (Has(clause, EChange::DropVirtual)) piece = kDropped;
      if (Has(clause, EChange::AddVirtual)) piece = kVirtual;
      sorted.at(piece).push_back(clause);
    }
    for (TClauses& piece : sorted)
      if (!piece.empty()) pieces_.push_back(std::move(piece));
  }

  // What a clause names has to be there by then, and nothing may hold on to what goes.
  bool MayBeApart() const {
    for (std::size_t i = 0; i < pieces_.size(); ++i) {
      for (const TLockClause& clause : pieces_[i]) {
        if (NamesLater(clause, i)) return false;
        if (clause.text.starts_with("drop column ") && IsHeld(clause.name, i)) return false;
        if (refers_ && clause.text.starts_with("drop ") && clause.word == "key" && AddsKey(i + 1)) return false;
        if (clause.text.starts_with("drop ") && ComesBack(clause, i + 1)) return false;
      }
    }
    return true;
  }

  // Which may be the one that takes over for one that goes.
  bool AddsKey(std::size_t piece) const {
    const auto adds = [](const TLockClause& clause) {
      return clause.text.starts_with("add ") && (clause.word == "key" || clause.word == "column");
    };
    return std::any_of(pieces_.begin() + static_cast<std::ptrdiff_t>(piece), pieces_.end(),
                       [&](const TClauses& later) { return std::ranges::any_of(later, adds); });
  }

  // Nobody is to be without a key or check in between, nor for good where its new form is refused.
  bool ComesBack(const TLockClause& dropped, std::size_t piece) const {
    const auto adds = [&dropped](const TLockClause& clause) {
      return clause.text.starts_with("add ") && clause.word == dropped.word && SameText(clause.name, dropped.name);
    };
    return dropped.word != "column" &&
           std::any_of(pieces_.begin() + static_cast<std::ptrdiff_t>(piece), pieces_.end(),
                       [&](const TClauses& later) { return std::ranges::any_of(later, adds); });
  }

  bool NamesLater(const TLockClause& clause, std::size_t piece) const {
    const std::vector<TToken> tokens = Tokens(clause.text);
    for (std::size_t later = piece + 1; later < pieces_.size(); ++later)
      for (const TLockClause& other : pieces_[later])
        if (other.text.starts_with("add column ") && HasName(tokens, other.name)) return true;
    return false;
  }

  bool IsHeld(const std::string& column, std::size_t piece) const {
    return std::ranges::any_of(table_.elements, [&](const TElement& element) {
      const bool own = element.kind == EElement::Column && SameText(element.name, column);
      if (own || !HasName(element.text.Tokens(), column)) return false;
      for (std::size_t i = 0; i <= piece; ++i)
        if (std::ranges::any_of(pieces_[i],
                                [&](const TLockClause& clause) { return Drops(clause, element.kind, element.name); }))
          return false;
      return true;
    });
  }

  bool LeadsToTheSame() const {
    try {
      TSchema apart, whole;
      apart.Add(table_);
      whole.Add(table_);
      ApplyStatement(AlterOf(table_.name, clauses_), whole);
      for (const TClauses& piece : pieces_) {
        ApplyStatement(AlterOf(table_.name, piece), apart);
        const TTableText& meanwhile = apart.Tables().front();
        if (LacksKey(meanwhile, whole.Tables().front()) || CountsWithoutKey(meanwhile)) return false;
      }
      return CreationTextOf(apart.Tables().front()) == CreationTextOf(whole.Tables().front());
    } catch (const EVelmora&) {
      return false;
    }
  }

  // MySQL can be set to refuse every statement that leaves a table without a primary key.
  bool LacksKey(const TTableText& meanwhile, const TTableText& afterwards) const {
    return server_.mysql && !HasPrimaryKey(meanwhile) && HasPrimaryKey(afterwards);
  }

  // Servers want a key over the column that they number.
  static bool CountsWithoutKey(const TTableText& table) {
    return std::ranges::any_of(table.elements, [&table](const TElement& column) {
      return column.kind == EElement::Column && column.text.Column().auto_increment &&
             std::ranges::none_of(table.elements, [&column](const TElement& key) {
               return IsKey(key.kind) && HasName(key.text.Tokens(), column.name);
             });
    });
  }

  const TClauses& clauses_;
  const TTableText& table_;
  const TServerTraits& server_;
  const bool refers_;
  std::vector<TClauses> pieces_;
};

// --- What a piece serves

std::string_view WordOf(const TChange& change) {
  if (change.action == saChangeTableType) return change.item == kPartitioningItem ? kPartitioningItem : kOptionsItem;
  if (IsColumnChange(change)) return "column";
  return IsKey(change.kind) ? "key" : "constraint";
}

bool IsAbout(const TLockClause& clause, const TChange& change) {
  const std::string_view word = WordOf(change);
  const bool named = word == "column" || word == "key" || word == "constraint";
  return clause.word == word && (!named || SameText(clause.name, change.item));
}

bool IsAbout(const TClauses& clauses, const TChange& change) {
  return std::ranges::any_of(clauses, [&change](const TLockClause& clause) { return IsAbout(clause, change); });
}

class TLocker {
 public:
  TLocker(const std::vector<TChange>& changes, const TSchema& target, const TPlanServer& server, ELockClass algorithm)
      : target_(target), algorithm_(algorithm) {
    for (const TChange& change : changes) changes_.emplace(change.id, &change);
    server_.mysql = server.mysql;
    server_.version = server.mysql || server.mariadb ? server.version : 0;
  }

  std::vector<TPlanStatement> Take(std::vector<TPlanStatement> plan) {
    for (TPlanStatement& statement : plan) {
      first_ = done_.size();
      const bool alters = IsAlter(statement) && target_.Find(statement.table) != nullptr;
      if (alters && server_.version != 0)
        Split(std::move(statement));
      else
        done_.push_back(std::move(statement));
      for (; alters && first_ < done_.size(); ++first_) WriteAlgorithm(algorithm_, done_[first_]);
    }
    return std::move(done_);
  }

 private:
  void Split(TPlanStatement statement) {
    TTableText* table = Table(statement.table);
    if (table == nullptr) {
      statement.lock = ELockClass::Unknown;
      return done_.push_back(std::move(statement));
    }
    const TClauses clauses = LockClauses(statement.text, *table, statement.checks_on);
    const bool whole = PosNoCase("using hash", statement.text) != 0;
    const std::vector<TClauses> pieces =
        whole ? std::vector<TClauses>{clauses} : TSplit(clauses, *table, server_, Refers(*table)).Pieces();
    for (const TClauses& piece : pieces) {
      TPlanStatement& part = done_.emplace_back(statement);
      if (pieces.size() > 1) part.text = AlterOf(statement.table, piece);
      if (pieces.size() > 1) Attribute(pieces, piece, part);
      table = Table(statement.table);
      part.lock = table == nullptr ? ELockClass::Unknown : ClassOfClauses(piece, *table, server_);
      const bool told = algorithm_ == ELockClass::Unknown && table != nullptr && HasToBeCopied(piece, *table, server_);
      if (told) part.text = WithAlgorithm(part.text, "copy");
      Follow(part);
    }
  }

  // Whether a foreign key leads from the table or to it.
  bool Refers(const TTableText& table) const {
    return std::ranges::any_of(target_.Tables(), [&table](const TTableText& other) {
      return std::ranges::any_of(other.elements, [&](const TElement& element) {
        return element.kind == EElement::ForeignKey &&
               (SameText(other.name, table.name) || SameText(element.text.ForeignKey().table, table.name));
      });
    });
  }

  // The table as the statements so far leave it; null where that is not known.
  TTableText* Table(const std::string& name) {
    if (lost_.contains(name)) return nullptr;
    if (TTableText* table = after_.Find(name); table != nullptr) return table;
    after_.Add(*target_.Find(name));
    return after_.Find(name);
  }

  void Follow(const TPlanStatement& statement) {
    try {
      ApplyStatement(statement.text, after_);
      if (after_.Find(statement.table) != nullptr) return;
    } catch (const EVelmora&) {
    }
    lost_.insert(statement.table);
  }

  // What no piece is about all of them serve.
  void Attribute(const std::vector<TClauses>& pieces, const TClauses& piece, TPlanStatement& part) const {
    const auto elsewhere = [&](const TChange& change) {
      return !IsAbout(piece, change) &&
             std::ranges::any_of(pieces, [&change](const TClauses& other) { return IsAbout(other, change); });
    };
    for (const int id : std::vector<int>(part.actions)) {
      const auto change = changes_.find(id);
      if (change == changes_.end() || !elsewhere(*change->second)) continue;
      std::erase(part.actions, id);
      std::erase_if(part.unsafe, [subject = Subject(*change->second) + ": "](const std::string& reason) {
        return reason.starts_with(subject);
      });
    }
  }

  const TSchema& target_;
  ELockClass algorithm_;
  TServerTraits server_;
  std::map<int, const TChange*> changes_;
  TSchema after_;  // tables that are altered
  std::set<std::string> lost_;
  std::vector<TPlanStatement> done_;
  std::size_t first_ = 0;  // of the statements that the last one has become
};

}  // namespace

bool WithinAlgorithm(ELockClass is, ELockClass algorithm) {
  if (algorithm == ELockClass::Unknown || is == ELockClass::None || is == ELockClass::Unknown) return true;
  if (algorithm == ELockClass::Instant) return is == ELockClass::Instant;
  return is != ELockClass::Copy && is != ELockClass::CopyWithWrites;
}

void WriteAlgorithm(ELockClass algorithm, TPlanStatement& statement) {
  if (algorithm == ELockClass::Unknown) return;
  const bool instant = algorithm == ELockClass::Instant || statement.lock == ELockClass::Instant;
  statement.text = WithAlgorithm(statement.text, instant ? "instant" : "inplace");
}

std::vector<TPlanStatement> WithLocks(std::vector<TPlanStatement> plan, const std::vector<TChange>& changes,
                                      const TSchema& target, const TPlanServer& server, ELockClass algorithm) {
  return TLocker(changes, target, server, algorithm).Take(std::move(plan));
}

}  // namespace velmora
