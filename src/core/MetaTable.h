// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// TMetaTable: one table of the structure store, a list of rows per master row with a current row.
//
// A row type has `id`, and says how it is linked and found:
//   int  MasterId() const             the id of its master row (kNoMaster for the top table)
//   const std::string& Name() const   what it is looked up by
//   static constexpr bool kUniqueName no two rows of one master may have exactly the same name
//   void CutTexts()                   cuts its texts to the widths of their fields
// and may have
//   void SetMasterId(int)             for detail rows
//   const std::string& Link() const   a second text that rows are found by, over all masters (WithLink)
//   static constexpr bool kFoundById  rows are found by their id too (FindId)
//   void BeforePost()                 a rule of the row itself
//
// Rows stand in stable nodes, in the order of their ids within a master. Lookups walk the rows of one master while
// these are few and use an index from there on; no operation walks the rows of other masters.
//
// Cursor: a master that moves to another row puts its details on their first row; sent to the row it stands on, it
// leaves them. A failed search leaves the cursor. After a deletion the following row is current, else the last.
//
// Changes: Append and Edit open a row, Post closes it. An open row shows at once; the next operation that needs the
// index closes it too. Post refuses a second row of the same name where names are unique: the row is then as it was
// before it was opened (an appended one is gone).

#include <algorithm>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "util/Errors.h"
#include "util/Text.h"

namespace velmora {

inline constexpr int kNoMaster = 0;

// What a master table tells its details, and asks of a detail that is a master itself.
class TMetaDetail {
 public:
  virtual void MasterMoved(int master) = 0;  // to the row with this id, or to none

 protected:
  ~TMetaDetail() = default;
};

// What a detail table asks its master.
class TMetaMaster {
 public:
  virtual int CurrentId() const = 0;  // kNoMaster without a current row

 protected:
  ~TMetaMaster() = default;
};

template <class Row>
class TMetaTable final : public TMetaDetail, public TMetaMaster {
 public:
  using TRows = std::list<Row>;
  using TMark = typename TRows::iterator;

  // `what` names a row of this table in messages, as in "column". The master, if any, must outlive this table.
  explicit TMetaTable(std::string_view what, TMetaMaster* master = nullptr) : what_(what), master_(master) {}
  TMetaTable(const TMetaTable&) = delete;
  TMetaTable& operator=(const TMetaTable&) = delete;

  void AddDetail(TMetaDetail& detail) { details_.push_back(&detail); }

  // --- The cursor, over the rows of the current master row
  bool Empty() const { return view_ == nullptr || view_->rows.empty(); }
  bool Eof() const { return Empty() || eof_; }  // Next found no further row
  // The current row; there must be one.
  const Row& Current() const { return *current_; }
  bool HasCurrent() const { return !Empty(); }
  int CurrentId() const override { return Empty() ? kNoMaster : current_->id; }

  void First() {
    eof_ = false;
    if (!Empty()) MoveTo(view_->rows.begin());
  }
  void Last() {
    eof_ = false;
    if (!Empty()) MoveTo(std::prev(view_->rows.end()));
  }
  void Next() {
    if (Empty()) return;
    if (std::next(current_) == view_->rows.end())
      eof_ = true;
    else
      MoveTo(std::next(current_));
  }
  TMark Mark() const { return current_; }
  void GoTo(TMark mark) {  // a row of the current master row
    eof_ = false;
    MoveTo(mark);
  }
  // The rows of the current master row, for walks that leave the cursor alone.
  TRows& Rows() { return view_ == nullptr ? nothing_ : view_->rows; }
  const TRows& Rows() const { return view_ == nullptr ? nothing_ : view_->rows; }
  // The rows of any master.
  const TRows& RowsOf(int master) const {
    const TList* list = ListOf(master);
    return list == nullptr ? nothing_ : list->rows;
  }
  std::size_t TotalCount() const { return total_; }  // over all masters

  // --- Lookups among the rows of the current master row
  // The current row when it has exactly this name, else the first in order whose name is equal but for case.
  bool Locate(std::string_view name) {
    if (HasCurrent() && current_->Name() == name) return Arrive();
    return LocateFirst(name);
  }
  // The current row when its name is equal but for case, else the first in order.
  bool LocateNoCase(std::string_view name) {
    if (HasCurrent() && SameText(current_->Name(), name)) return Arrive();
    return LocateFirst(name);
  }
  // The row with exactly this name.
  bool LocateExact(std::string_view name) {
    std::optional<TMark> found = Search(name, [name](const Row& row) { return row.Name() == name; });
    if (!found) return false;
    GoTo(*found);
    return true;
  }

  // The row with this id, or null.
  const Row* FindId(int id) requires requires { Row::kFoundById; }
  {
    Settle();
    const auto found = by_id_.find(id);
    return found == by_id_.end() ? nullptr : &*found->second;
  }

  // Ids of the masters of all rows whose Link is exactly `link`, rising, each once.
  std::vector<int> WithLink(const std::string& link) requires requires(const Row& row) { row.Link(); }
  {
    Settle();
    std::vector<int> masters;
    auto [from, to] = by_link_.equal_range(link);
    for (; from != to; ++from) masters.push_back(from->second->MasterId());
    std::sort(masters.begin(), masters.end());
    masters.erase(std::unique(masters.begin(), masters.end()), masters.end());
    return masters;
  }

  // --- Changes
  // Opens a new last row of the current master row, with the row type's defaults, and makes it current.
  Row& Append() {
    Settle();
    const int master = MasterId();
    view_ = &NeededList(master);
    TRows& rows = view_->rows;
    rows.emplace_back();
    const TMark row = std::prev(rows.end());
    row->id = NextId();
    if constexpr (requires { row->SetMasterId(master); }) row->SetMasterId(master);
    ++total_;
    GoTo(row);
    opened_ = EOpened::Appended;
    open_ = row;
    return *row;
  }
  // Opens the current row; an open one is simply given.
  Row& Edit() {
    if (opened_ != EOpened::None && open_ == current_) return *current_;
    Settle();
    before_ = *current_;
    Unindex(current_);
    opened_ = EOpened::Edited;
    open_ = current_;
    return *current_;
  }
  // The current row, for changes to fields that no rule and no lookup looks at; opens nothing.
  Row& Amend() { return *current_; }
  bool IsOpen() const { return opened_ != EOpened::None; }
  // Closes the open row. Raises "Duplicate %s name: %s".
  void Post() {
    if (opened_ == EOpened::None) return;
    const TMark row = open_;
    row->CutTexts();
    if constexpr (requires { row->BeforePost(); }) row->BeforePost();
    if (Row::kUniqueName && HasTwin(row)) {
      const std::string name = row->Name();
      CancelOpen();
      RaiseError("Duplicate " + std::string(what_) + " name: " + name);
    }
    opened_ = EOpened::None;
    before_.reset();
    Index(row);
  }
  // Deletes the current row. The rows of its details are the caller's to delete first.
  void Delete() {
    Settle();
    if (!Empty()) Erase(current_);
  }
  // Deletes all rows of one master.
  void DeleteOf(int master) {
    Settle();
    TList* list = ListOf(master);
    if (list == nullptr) return;
    for (TMark row = list->rows.begin(); row != list->rows.end(); ++row) Unindex(row);
    total_ -= list->rows.size();
    const bool seen = view_ == list;
    lists_[static_cast<std::size_t>(master)].reset();
    if (seen) Look();
  }
  void Clear() {
    opened_ = EOpened::None;
    before_.reset();
    by_link_.clear();
    by_id_.clear();
    lists_.clear();
    total_ = 0;
    Look();
  }
  // Puts the current row after `anchor` (in front of all when there is none). The row and those after it get new ids.
  void MoveAfter(std::optional<TMark> anchor) {
    Settle();
    TRows& rows = view_->rows;
    const TMark place = anchor ? std::next(*anchor) : rows.begin();
    if ((anchor && *anchor == current_) || place == current_) return;
    rows.splice(place, rows, current_);
    for (TMark row = current_; row != rows.end(); ++row) row->id = NextId();
  }
  // Makes this table a copy of `source`, ids included, on its first row.
  void CopyFrom(const TMetaTable& source) {
    Clear();
    for (std::size_t master = 0; master < source.lists_.size(); ++master) {
      if (!source.lists_[master]) continue;
      TList& list = NeededList(static_cast<int>(master));
      list.rows = source.lists_[master]->rows;
      list.IndexNames();
      for (TMark row = list.rows.begin(); row != list.rows.end(); ++row) IndexApart(row);
    }
    total_ = source.total_;
    next_id_ = std::max(next_id_, source.next_id_);
    Look();
  }

  void MasterMoved(int master) override { LookAt(master); }

 private:
  enum class EOpened { None, Appended, Edited };

  using TIndex = std::unordered_multimap<std::size_t, TMark>;
  struct TList {
    TRows rows;
    std::unique_ptr<TIndex> by_name;  // there once the rows are many
    std::size_t alike = 0;            // rows in the index whose hash another row had before them

    // Makes the index of all rows, where they are many enough for one.
    void IndexNames() {
      if (rows.size() <= kIndexedFrom) return;
      by_name = std::make_unique<TIndex>();
      for (TMark row = rows.begin(); row != rows.end(); ++row) IndexName(row);
    }
    void IndexName(TMark row) {
      const std::size_t hash = NameHash(row->Name());
      if (by_name->contains(hash)) ++alike;
      by_name->emplace(hash, row);
    }
    void ForgetName(TMark row) {
      const std::size_t hash = NameHash(row->Name());
      if (Forget(*by_name, hash, row) && by_name->contains(hash)) --alike;  // a row that was never posted is not there
    }
  };
  static constexpr std::size_t kIndexedFrom = 32;

  TList* ListOf(int master) const {
    const auto place = static_cast<std::size_t>(master);
    return place < lists_.size() ? lists_[place].get() : nullptr;
  }
  TList& NeededList(int master) {
    const auto place = static_cast<std::size_t>(master);
    if (place >= lists_.size()) lists_.resize(std::max(place + 1, 2 * lists_.size()));
    if (!lists_[place]) lists_[place] = std::make_unique<TList>();
    return *lists_[place];
  }

  int MasterId() const { return master_ == nullptr ? kNoMaster : master_->CurrentId(); }
  int NextId() { return next_id_++; }

  // Shows the rows of the master's current row and stands on the first of them.
  void Look() { LookAt(MasterId()); }
  void LookAt(int master) {
    view_ = master_ != nullptr && master == kNoMaster ? nullptr : ListOf(master);
    eof_ = false;
    positioned_ = !Empty();
    if (positioned_) current_ = view_->rows.begin();
    Tell();
  }
  void Tell() {
    const int id = CurrentId();
    for (TMetaDetail* detail : details_) detail->MasterMoved(id);
  }
  void MoveTo(TMark mark) {
    const bool moved = !positioned_ || mark != current_;
    current_ = mark;
    positioned_ = true;
    if (moved) Tell();
  }
  bool Arrive() {
    eof_ = false;
    return true;
  }

  bool LocateFirst(std::string_view name) {
    if (FollowsAlone(name)) {
      GoTo(std::next(current_));
      return true;
    }
    std::optional<TMark> found = Search(name, [name](const Row& row) { return SameText(row.Name(), name); });
    if (!found) return false;
    GoTo(*found);
    return true;
  }
  // Whether the row after the current one has this name and no other row can have it: walks over two stores side by
  // side ask for one name after the other, and so are spared the index.
  bool FollowsAlone(std::string_view name) {
    if (opened_ != EOpened::None || Empty() || !view_->by_name || view_->alike != 0) return false;
    const TMark next = std::next(current_);
    return next != view_->rows.end() && SameText(next->Name(), name);
  }
  template <class Fits>
  std::optional<TMark> Search(std::string_view name, Fits fits) {
    Settle();
    if (Empty()) return std::nullopt;
    return First(*view_, name, fits);
  }
  // The first row in order that fits; `name` is the one that those which may fit have, whatever its case.
  template <class Fits>
  static std::optional<TMark> First(TList& list, std::string_view name, Fits fits) {
    if (!list.by_name) {
      for (TMark row = list.rows.begin(); row != list.rows.end(); ++row)
        if (fits(*row)) return row;
      return std::nullopt;
    }
    std::optional<TMark> first;
    auto [from, to] = list.by_name->equal_range(NameHash(name));
    for (; from != to; ++from)
      if (fits(*from->second) && (!first || from->second->id < (*first)->id)) first = from->second;
    return first;
  }
  bool HasTwin(TMark row) {
    const Row* self = &*row;
    return First(*ListOf(row->MasterId()), row->Name(),
                 [self](const Row& other) { return &other != self && other.Name() == self->Name(); })
        .has_value();
  }

  void Index(TMark row) {
    TList& list = *ListOf(row->MasterId());
    if (list.by_name)
      list.IndexName(row);
    else
      list.IndexNames();
    IndexApart(row);
  }
  void IndexApart(TMark row) {  // what goes over all masters
    if constexpr (requires { row->Link(); }) by_link_.emplace(row->Link(), row);
    if constexpr (requires { Row::kFoundById; }) by_id_.emplace(row->id, row);
  }
  void Unindex(TMark row) {
    TList& list = *ListOf(row->MasterId());
    if (list.by_name) list.ForgetName(row);
    if constexpr (requires { row->Link(); }) Forget(by_link_, row->Link(), row);
    if constexpr (requires { Row::kFoundById; }) by_id_.erase(row->id);
  }
  template <class Map, class Key>
  static bool Forget(Map& map, const Key& key, TMark row) {  // false for one that is not in there
    auto [from, to] = map.equal_range(key);
    for (; from != to; ++from) {
      if (from->second != row) continue;
      map.erase(from);
      return true;
    }
    return false;
  }

  // Closes a row that somebody left open; a name that is taken cancels it without a word.
  void Settle() {
    if (opened_ == EOpened::None) return;
    open_->CutTexts();
    if (Row::kUniqueName && HasTwin(open_))
      CancelOpen();
    else
      Post();
  }
  void CancelOpen() {
    const EOpened opened = opened_;
    opened_ = EOpened::None;
    if (opened == EOpened::Edited) {
      *open_ = std::move(*before_);
      before_.reset();
      Index(open_);
    } else {
      Erase(open_);
    }
  }
  void Erase(TMark row) {
    TList& list = *ListOf(row->MasterId());
    TRows& rows = list.rows;
    Unindex(row);
    --total_;
    const bool was_current = &list == view_ && row == current_;
    const TMark next = rows.erase(row);
    if (!was_current) return;
    positioned_ = false;
    if (!rows.empty())
      GoTo(next == rows.end() ? std::prev(next) : next);
    else
      Look();
  }

  std::string_view what_;
  TMetaMaster* master_;
  std::vector<TMetaDetail*> details_;
  std::vector<std::unique_ptr<TList>> lists_;  // by the id of the master row
  std::unordered_multimap<std::string, TMark> by_link_;
  std::unordered_map<int, TMark> by_id_;
  std::size_t total_ = 0;
  int next_id_ = 1;

  TRows nothing_;
  TList* view_ = nullptr;
  TMark current_{};
  bool positioned_ = false;
  bool eof_ = false;

  EOpened opened_ = EOpened::None;
  TMark open_{};
  std::optional<Row> before_;
};

}  // namespace velmora
