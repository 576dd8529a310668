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
// Rows stand in stable nodes, in the order of their ids within a master. Lookups are indexed; nothing here walks more
// than the rows of one master.
//
// Cursor: a master that moves to another row puts its details on their first row; sent to the row it stands on, it
// leaves them. A failed search leaves the cursor. After a deletion the following row is current, else the last.
//
// Changes: Append and Edit open a row, Post closes it. An open row shows at once; the next operation that needs the
// index closes it too. Post refuses a second row of the same name where names are unique: the row is then as it was
// before it was opened (an appended one is gone).

#include <algorithm>
#include <list>
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
  virtual void MasterMoved() = 0;

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

std::size_t NameHash(int master, std::string_view name);  // the case of letters plays no part

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
  bool Empty() const { return view_ == nullptr || view_->empty(); }
  bool Eof() const { return Empty() || eof_; }  // Next found no further row
  // The current row; there must be one.
  const Row& Current() const { return *current_; }
  bool HasCurrent() const { return !Empty(); }
  int CurrentId() const override { return Empty() ? kNoMaster : current_->id; }

  void First() {
    eof_ = false;
    if (!Empty()) MoveTo(view_->begin());
  }
  void Last() {
    eof_ = false;
    if (!Empty()) MoveTo(std::prev(view_->end()));
  }
  void Next() {
    if (Empty()) return;
    if (std::next(current_) == view_->end())
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
  TRows& Rows() { return view_ == nullptr ? nothing_ : *view_; }
  const TRows& Rows() const { return view_ == nullptr ? nothing_ : *view_; }
  // The rows of any master.
  const TRows& RowsOf(int master) const {
    const auto found = lists_.find(master);
    return found == lists_.end() ? nothing_ : found->second;
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
  const Row* FindId(int id) requires(Row::kFoundById) {
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
    TRows& rows = lists_[master];
    view_ = &rows;
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
    const auto found = lists_.find(master);
    if (found == lists_.end()) return;
    for (TMark row = found->second.begin(); row != found->second.end(); ++row) Unindex(row);
    total_ -= found->second.size();
    const bool seen = view_ == &found->second;
    lists_.erase(found);
    if (seen) Look();
  }
  void Clear() {
    opened_ = EOpened::None;
    before_.reset();
    by_name_.clear();
    by_link_.clear();
    by_id_.clear();
    lists_.clear();
    total_ = 0;
    Look();
  }
  // Puts the current row behind `anchor` (in front of all when there is none). The row and those behind it get new ids.
  void MoveBehind(std::optional<TMark> anchor) {
    Settle();
    const TMark place = anchor ? std::next(*anchor) : view_->begin();
    if ((anchor && *anchor == current_) || place == current_) return;
    view_->splice(place, *view_, current_);
    for (TMark row = current_; row != view_->end(); ++row) row->id = NextId();
  }
  // Makes this table a copy of `source`, ids included, on its first row.
  void CopyFrom(const TMetaTable& source) {
    Clear();
    for (const auto& [master, rows] : source.lists_) {
      TRows& copy = lists_[master];
      copy = rows;
      for (TMark row = copy.begin(); row != copy.end(); ++row) Index(row);
    }
    total_ = source.total_;
    next_id_ = std::max(next_id_, source.next_id_);
    Look();
  }

  void MasterMoved() override { Look(); }

 private:
  enum class EOpened { None, Appended, Edited };

  int MasterId() const { return master_ == nullptr ? kNoMaster : master_->CurrentId(); }
  int NextId() { return next_id_++; }

  // Shows the rows of the master's current row and stands on the first of them.
  void Look() {
    const int master = MasterId();
    const auto found = master_ != nullptr && master == kNoMaster ? lists_.end() : lists_.find(master);
    view_ = found == lists_.end() ? nullptr : &found->second;
    eof_ = false;
    positioned_ = !Empty();
    if (positioned_) current_ = view_->begin();
    Tell();
  }
  void Tell() {
    for (TMetaDetail* detail : details_) detail->MasterMoved();
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
    std::optional<TMark> found = Search(name, [name](const Row& row) { return SameText(row.Name(), name); });
    if (!found) return false;
    GoTo(*found);
    return true;
  }
  template <class Fits>
  std::optional<TMark> Search(std::string_view name, Fits fits) {
    Settle();
    if (Empty()) return std::nullopt;
    const int master = MasterId();
    std::optional<TMark> first;
    auto [from, to] = by_name_.equal_range(NameHash(master, name));
    for (; from != to; ++from) {
      const TMark row = from->second;
      if (row->MasterId() == master && fits(*row) && (!first || row->id < (*first)->id)) first = row;
    }
    return first;
  }
  bool HasTwin(TMark row) {
    auto [from, to] = by_name_.equal_range(NameHash(row->MasterId(), row->Name()));
    return std::any_of(from, to, [row](const auto& entry) {
      return entry.second != row && entry.second->MasterId() == row->MasterId() && entry.second->Name() == row->Name();
    });
  }

  void Index(TMark row) {
    by_name_.emplace(NameHash(row->MasterId(), row->Name()), row);
    if constexpr (requires { row->Link(); }) by_link_.emplace(row->Link(), row);
    if constexpr (requires { Row::kFoundById; }) by_id_.emplace(row->id, row);
  }
  void Unindex(TMark row) {
    Forget(by_name_, NameHash(row->MasterId(), row->Name()), row);
    if constexpr (requires { row->Link(); }) Forget(by_link_, row->Link(), row);
    if constexpr (requires { Row::kFoundById; }) by_id_.erase(row->id);
  }
  template <class Map, class Key>
  static void Forget(Map& map, const Key& key, TMark row) {
    auto [from, to] = map.equal_range(key);
    for (; from != to; ++from) {
      if (from->second != row) continue;
      map.erase(from);
      return;
    }
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
    TRows& rows = lists_.find(row->MasterId())->second;
    Unindex(row);
    --total_;
    const bool was_current = &rows == view_ && row == current_;
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
  std::unordered_map<int, TRows> lists_;
  std::unordered_multimap<std::size_t, TMark> by_name_;
  std::unordered_multimap<std::string, TMark> by_link_;
  std::unordered_map<int, TMark> by_id_;
  std::size_t total_ = 0;
  int next_id_ = 1;

  TRows nothing_;
  TRows* view_ = nullptr;
  TMark current_{};
  bool positioned_ = false;
  bool eof_ = false;

  EOpened opened_ = EOpened::None;
  TMark open_{};
  std::optional<Row> before_;
};

}  // namespace velmora
