// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/run/ExactSync.h"

#include "exact/compare/ServerLanguage.h"
#include "exact/plan/PlanApply.h"
#include "exact/plan/RenamePlan.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <utility>

#include "core/CreationTexts.h"
#include "core/Host.h"
#include "exact/objects/Dependents.h"
#include "exact/run/IdlePatterns.h"
#include "exact/run/ObjectTarget.h"
#include "exact/run/TablesNotMade.h"
#include "sync/CaseTwins.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNoReference[] = "There is no reference database";
constexpr char kNoTarget[] = "There is no target database";
constexpr char kSkipped[] = "Skipped: table %s, %s: %s";
constexpr char kStatement[] = "Not followed: %s";
constexpr char kIdle[] = "--%s %s names nothing that is there";
constexpr char kLeftOut[] = "Left out: %s";
constexpr char kOtherObject[] = "Not the same: %s %s: %s";
constexpr char kNamedBy[] = "%s is named by %s";
constexpr char kUnmade[] = "No form in MySQL: %s";
constexpr char kMapping[] = "Mapping: %s";
constexpr char kTakenAsEqual[] = "Taken as equal: %s (%d)";
constexpr char kVerified[] = "Verified: %s";
constexpr char kNotVerified[] = "Not verified: %d differences left";
constexpr char kNotFollowed[] = "Not verified: %s";
constexpr char kNotProved[] = "Not verified: how the server takes the script beside table %s, which is skipped";

TDBConn& Side(const std::unique_ptr<TDBConn>& conn, const char* missing) {
  if (conn == nullptr) RaiseError(missing);
  return *conn;
}

// Without what a session of this dialect sets: servers of old refuse that.
void LogInAnew(TDBConn& conn) {
  auto* texts = dynamic_cast<TCreationTexts*>(&conn);
  if (texts == nullptr) return conn.Reconnect();
  conn.Disconnect();
  texts->PrepareExactTexts(false);
  conn.GetConnectionObject().SetConnected(true);
}

void Prepare(TDBConn& conn) {
  if (auto* texts = dynamic_cast<TCreationTexts*>(&conn); texts != nullptr) texts->PrepareExactTexts();
}

void Connect(TDBConn& conn) {
  if (dynamic_cast<TCreationTexts*>(&conn) != nullptr) conn.Connect();
}

// Scripts have CR LF at their ends of lines, within statements too.
std::string AsSent(const std::string& statement) {
  return StrReplace(StrReplace(statement, "\r\n", "\n"), "\n", "\r\n");
}

std::string TextOf(const std::map<std::string, std::string>& texts, const std::string& table) {
  const auto found = texts.find(table);
  return found == texts.end() ? std::string() : found->second;
}

// With the table's name in front, unless the text has it.
std::string LogLine(const TChange& change) {
  const bool named = change.action == saChangeTableType || SyncAction(change.action).WholeTable();
  return named ? change.LogText() : change.table + ": " + change.LogText();
}

// What is changed, by the names that these renames lead to.
std::string PlaceOf(const TChange& change, const std::vector<TRename>& renames) {
  std::string table = change.table, item = change.item;
  for (const TRename& rename : renames)
    if (rename.table == table && change.kind == EElement::Column && SameText(rename.from, item)) item = rename.to;
  for (const TRename& rename : renames)
    if (rename.OfTable() && rename.from == table) table = rename.to;
  return Format("%d\n%d\n%s\n%s", static_cast<int>(change.action), static_cast<int>(change.kind), table, item);
}

}  // namespace

TExactSync::TExactSync(TTaskConnections& connections, TdmData& data, TActionTree& tree, TProgress& progress,
                       TMessageLog& log)
    : connections_(connections), data_(data), tree_(tree), progress_(progress), log_(log) {}

void TExactSync::Compare() {
  TDBConn& reference = Side(connections_.reference, kNoReference);
  TDBConn& target = Side(connections_.target, kNoTarget);
  Forget();
  RunGuarded(
      [&] {
        tree_.BeginUpdate();
        progress_.ShowSimple("Connecting...");
        LogInAnew(reference);
        LogInAnew(target);
        if (OnLogin) OnLogin();
        // Both are to be at work before the first answer is waited for.
        Prepare(reference);
        Prepare(target);
        Connect(reference);
        Connect(target);
        const std::unique_ptr<TTextMaker> maker = MakerFor(reference);
        ReadPair(reference, target,
                 {Collations, Wishes.selection, Wishes.reference_version, Wishes.locks.target_version}, progress_,
                 table_under_way_, maker.get(), read_);
        table_under_way_.clear();
        LookForIdlePatterns(maker == nullptr);
        if (maker == nullptr) case_twins_ = velmora::CaseTwins(reference, target, read_.case_counts);
        CompareSchemas(target);
        CompareOthers(target);
        NameDependents(TargetObjects(), objects_.changes, changes_);
        ShowChanges();
        Prove();
        AskSizes(target);
        FillLog();
        log_.LogLine("Done.");
      },
      [&] {
        target_lost_ = !target.GetConnected();
        tree_.EndUpdate();
        progress_.Finish();
      });
}

// Null for an engine that has creation texts, and where nobody makes any.
std::unique_ptr<TTextMaker> TExactSync::MakerFor(TDBConn& reference) const {
  if (!MakeTexts || dynamic_cast<TCreationTexts*>(&reference) != nullptr) return nullptr;
  return MakeTexts(reference);
}

void TExactSync::Forget() {
  data_.mtActions.Clear();
  ActionLog.clear();
  Equivalences = SwitchedEquivalences(Wishes);
  read_ = {};
  case_twins_.clear();
  keys_to_nothing_.clear();
  idle_only_.clear();
  idle_except_.clear();
  renames_.clear();
  renamed_.reset();
  renamed_objects_.reset();
  translated_objects_.reset();
  offers_.clear();
  renames_told_.clear();
  renames_refused_.clear();
  target_server_ = {};
  changes_.clear();
  objects_ = {};
  plan_.clear();
  sizes_.clear();
  proof_.clear();
  differences_left_ = 0;
  table_under_way_.clear();
  target_lost_ = false;
}

void TExactSync::LookForIdlePatterns(bool objects) {
  if (!read_.not_seen.empty()) return;
  for (const std::string& pattern : IdlePatterns(Wishes.selection.only, read_, objects))
    idle_only_.push_back(Format(kIdle, "only", pattern));
  for (const std::string& pattern : IdlePatterns(Wishes.selection.except, read_, objects))
    idle_except_.push_back(Format(kIdle, "except", pattern));
}

bool TExactSync::NothingNamed() const {
  return !idle_only_.empty() && idle_only_.size() == Wishes.selection.only.size();
}

// What is left out of the comparison is no difference, whenever it is looked for.
std::vector<TChange> TExactSync::ChangesOf(const TSchema& target, TEquivalenceUse& use, const TTableNames* only,
                                           TLeftOut* left) const {
  std::vector<TChange> changes = SchemaChanges(read_.reference.schema, target, use, only);
  velmora::LeaveOut(Wishes.selection, changes, left);
  return changes;
}

void TExactSync::CompareSchemas(TDBConn& target) {
  progress_.SetTitle("Comparing tables...");
  Host().ProcessMessages();
  if (!Wishes.renames.empty()) Rename(target);
  changes_ = ChangesOf(Target(), Equivalences, nullptr, &read_.left_out);
  keys_to_nothing_ = ForeignKeysToNothing(changes_, read_.reference.schema, read_.left_out);
  MarkUnknownCollations(target, read_.target.texts, changes_);
}

// The tables are compared as they are afterwards; what the target has before is what the proof begins with.
void TExactSync::Rename(TDBConn& target) {
  if (const std::string version = TargetVersion(target); !version.empty()) target_server_ = ReadServerTraits(version);
  TRenaming renaming = FitRenames(Wishes.renames, read_, Wishes.selection, read_.case_counts);
  renames_ = std::move(renaming.fits);
  renames_told_ = std::move(renaming.told);
  renames_refused_ = std::move(renaming.refused);
  if (!renames_.empty()) renamed_ = read_.target.schema;
  for (TRenameChange& change : renames_) {
    ApplyRename(change.rename, target_server_, *renamed_);
    change.id = data_.mtActions.Append(saRename, change.Table(), change.Item(), change.rename.Text()).id;
    tree_.AddToTree(saRename, change.Table(), change.id, change.LogText());
    if (!change.rename.OfTable()) continue;
    if (!renamed_objects_) renamed_objects_ = read_.target_objects;
    FollowRename(change.rename, *renamed_objects_);
  }
}

void TExactSync::CompareOthers(TDBConn& target) {
  TDatabaseObjects& theirs = renamed_objects_ ? *renamed_objects_ : read_.target_objects;
  theirs.trigger_case = read_.target_objects.trigger_case = TriggerCaseCounts(TargetVersion(target));
  read_.wanted_objects.table_text = [this](const std::string& table) {
    return TextOf(read_.objects_alone ? read_.target.texts : read_.reference.texts, table);
  };
  theirs.table_text = [this](const std::string& table) { return TextOf(read_.target.texts, table); };
  if (!Collations.empty() || read_.servers.differ) translated_objects_ = read_.wanted_objects;
  if (!Collations.empty()) MapCollations(Collations, *translated_objects_);
  if (read_.servers.differ) TranslateObjects(read_.servers, theirs, *translated_objects_);
  objects_ = CompareObjects(WantedObjects(), theirs, Wishes.definers, &Equivalences);
  TellAsRead();
  server_ = PlanServerOf(target);
  TKnownSets sets(target);
  sets.Believe(read_.target.texts);
  SettleOnTarget(target, server_, sets, {WantedObjects(), theirs}, objects_);
  LeaveWhatCannotBe({read_.servers, TablesNotMade(read_), sets}, WantedObjects(), theirs, objects_);
  const TStringList named = NamesOfRenamed(renames_, theirs, objects_.changes);
  renames_told_.insert(renames_told_.end(), named.begin(), named.end());
}

// Triggers of renamed tables have the text that the server has now.
void TExactSync::TellAsRead() {
  if (!renamed_objects_) return;
  std::map<std::string, const TOtherObject*> triggers;
  for (const TOtherObject& object : read_.target_objects.objects)
    if (object.kind == "trigger") triggers.emplace(object.name, &object);
  for (TObjectChange& change : objects_.changes)
    if (const auto read = triggers.find(change.old_object.name); change.kind == "trigger" && read != triggers.end())
      change.old_object = *read->second;
}

void TExactSync::ShowChanges() {
  for (TChange& change : changes_) {
    const TActionRow& row = data_.mtActions.Append(change.action, change.table, change.item, change.Description());
    change.id = row.id;
    tree_.AddToTree(change.action, change.table, row.id, change.LogText());
  }
  offers_ = velmora::RenameOffers(changes_, read_.reference.schema, Target(), Equivalences);
  for (TObjectChange& change : objects_.changes) {
    const std::string group(KindsTitle(change.kind));
    const TActionRow& row = data_.mtActions.Append(change.action, group, change.Object(), change.Description());
    change.id = row.id;
    tree_.AddToTree(change.action, group, row.id, change.LogText());
  }
}

// The others were just found to be equal, and stay as they are.
TTableNames TExactSync::TouchedTables() const {
  TTableNames tables;
  for (const TChange& change : changes_) tables.insert(change.table);
  for (const TRenameChange& change : renames_)
    tables.insert({change.Table(), change.rename.OfTable() ? change.rename.from : change.rename.table});
  for (const TPlanStatement& statement : plan_)
    if (statement.object.empty()) tables.insert(statement.table);
  return tables;
}

// Every statement is read again from its text, so that what is proved is what will run.
TSchema TExactSync::TablesAfter(const std::vector<TPlanStatement>& plan, TStringList& faults) const {
  const TTableNames touched = TouchedTables();
  TSchema after;
  for (const TTableText& table : read_.target.schema.Tables())
    if (touched.contains(table.name)) after.Add(table);
  FollowTables(plan, after, faults);
  return after;
}

void TExactSync::FollowTables(const std::vector<TPlanStatement>& plan, TSchema& tables, TStringList& faults) const {
  for (const TPlanStatement& statement : plan) {
    if (!statement.object.empty()) continue;
    try {
      ApplyStatement(AsSent(statement.text), tables, target_server_);
    } catch (const EVelmora& error) {
      faults.push_back(error.what());
    }
  }
}

TDatabaseObjects TExactSync::ObjectsAfter(const std::vector<TPlanStatement>& plan, TStringList& faults) const {
  TDatabaseObjects after = read_.target_objects;
  FollowObjects(plan, after, faults);
  return after;
}

void TExactSync::FollowObjects(const std::vector<TPlanStatement>& plan, TDatabaseObjects& objects,
                               TStringList& faults) {
  TObjectProof made(objects);
  for (const TPlanStatement& statement : plan) {
    try {
      if (statement.object.empty())
        made.ApplyToTables(statement.text);
      else
        made.Apply(statement.text);  // which goes out with the line ends of the reference
    } catch (const EVelmora& error) {
      faults.push_back(error.what());
    }
  }
}

void TExactSync::Prove() {
  if (changes_.empty() && objects_.changes.empty() && renames_.empty()) return;
  plan_ = PlanOf(changes_, objects_.changes);
  const TTableNames touched = TouchedTables();
  TStringList faults;
  const TSchema after = TablesAfter(plan_, faults);
  TEquivalenceUse use = Equivalences;
  const std::vector<TChange> left = ChangesOf(after, use, &touched);
  const TStringList objects_left = ObjectsLeft(faults);
  for (const std::string& fault : faults) proof_.push_back(Format(kNotFollowed, fault));
  differences_left_ = static_cast<int>(left.size() + objects_left.size());
  proof_.push_back(differences_left_ == 0 ? Format(kVerified, NothingLeft()) : Format(kNotVerified, differences_left_));
  for (const TChange& change : left) proof_.push_back("  " + change.table + ": " + change.LogText());
  for (const std::string& object : objects_left) proof_.push_back("  " + object);
  for (const TSkippedTable& skipped : read_.skipped) proof_.push_back(Format(kNotProved, skipped.table));
}

// What the plan would leave of the differences beside tables; what it cannot change is none of its affair.
TStringList TExactSync::ObjectsLeft(TStringList& faults) const {
  const TDatabaseObjects after = ObjectsAfter(plan_, faults);
  TEquivalenceUse use = Equivalences;
  std::vector<TObjectChange> changes = CompareObjects(WantedObjects(), after, Wishes.definers, &use).changes;
  LeaveOutTold(changes);
  TStringList left;
  for (const TObjectChange& change : changes) left.push_back(change.LogText());
  return left;
}

void TExactSync::LeaveOutTold(std::vector<TObjectChange>& changes) const {
  std::set<TObjectKey> told;
  for (const TObjectDifference& object : objects_.differences) told.insert(ObjectKey(object.kind, object.name));
  std::erase_if(changes,
                [&](const TObjectChange& change) { return told.contains(ObjectKey(change.kind, change.name)); });
}

// By the renames that are left; their statements go to `plan`, if there is one.
TSchema TExactSync::RenamedTarget(std::vector<TPlanStatement>* plan) const {
  TSchema schema = read_.target.schema;
  for (const TRenameChange& change : renames_) {
    if (data_.mtActions.Find(change.id) == nullptr) continue;
    if (plan != nullptr) std::ranges::move(StatementsOf(change, schema), std::back_inserter(*plan));
    ApplyRename(change.rename, target_server_, schema);
  }
  return schema;
}

std::vector<TPlanStatement> TExactSync::StatementsOf(const TRenameChange& change, const TSchema& schema) const {
  std::vector<TPlanStatement> statements =
      RenameStatements(change.rename, target_server_, schema, server_.unchecked_foreign_keys);
  for (TPlanStatement& statement : statements) {
    statement.actions.push_back(change.id);
    WriteAlgorithm(Wishes.locks.algorithm, statement);
  }
  return statements;
}

std::vector<TPlanStatement> TExactSync::PlanOf(const std::vector<TChange>& changes,
                                               const std::vector<TObjectChange>& objects) const {
  TObjectPlan beside = MakeObjectPlan(objects, server_, DroppedTables(changes));
  std::vector<TPlanStatement> plan = std::move(beside.before);
  TSchema there;
  if (!renames_.empty()) there = RenamedTarget(&plan);
  const TSchema& target = renames_.empty() ? read_.target.schema : there;
  std::ranges::move(WithLocks(MakePlan(changes, read_.reference.schema, target, server_), changes, target, server_,
                              Wishes.locks.algorithm),
                    std::back_inserter(plan));
  std::ranges::move(beside.after, std::back_inserter(plan));
  return plan;
}

void TExactSync::FillLog() {
  ActionLog = case_twins_;
  ActionLog.insert(ActionLog.end(), idle_only_.begin(), idle_only_.end());
  if (Verbose) ActionLog.insert(ActionLog.end(), idle_except_.begin(), idle_except_.end());
  if (read_.left_out.Any()) ActionLog.push_back(Format(kLeftOut, read_.left_out.Text()));
  if (Verbose)
    for (const TStringList* names : {&read_.left_out.tables, &read_.left_out.objects, &read_.left_out.changes})
      for (const std::string& name : *names) ActionLog.push_back("  " + name);
  ActionLog.insert(ActionLog.end(), keys_to_nothing_.begin(), keys_to_nothing_.end());
  ActionLog.insert(ActionLog.end(), read_.left_alone.begin(), read_.left_alone.end());
  for (const TObjectDifference& object : objects_.differences)
    ActionLog.push_back(Format(kOtherObject, object.kind, object.name, object.difference));
  ActionLog.insert(ActionLog.end(), objects_.remarks.begin(), objects_.remarks.end());
  for (const std::string& statement : read_.not_followed) ActionLog.push_back(Format(kStatement, statement));
  for (const TKindsNotSeen& kinds : read_.not_seen) ActionLog.push_back(kinds.Text());
  for (const TSkippedTable& skipped : read_.skipped)
    ActionLog.push_back(Format(kSkipped, skipped.table, skipped.side, skipped.reason));
  for (const TUnmadeElement& element : read_.unmade) ActionLog.push_back(Format(kUnmade, element.Text()));
  for (const TMadeColumn& column : read_.made)
    if (Verbose || column.level == EMadeLevel::Warning) ActionLog.push_back(Format(kMapping, column.Text()));
  for (const TStringList* lines : {&renames_refused_, &renames_told_})
    ActionLog.insert(ActionLog.end(), lines->begin(), lines->end());
  for (const TRenameChange& change : renames_)
    ActionLog.push_back((change.rename.OfTable() ? "" : change.rename.table + ": ") + change.LogText());
  for (const TChange& change : changes_) {
    ActionLog.push_back(LogLine(change));
    const std::string place = change.action == saDropTable ? change.table : change.table + ": " + change.item;
    if (!change.named_by.empty()) ActionLog.push_back(Format(kNamedBy, place, change.named_by));
  }
  for (const TRenameOffer& offer : offers_) ActionLog.push_back(offer.Text());
  for (const TObjectChange& change : objects_.changes) ActionLog.push_back(change.LogText());
  ActionLog.insert(ActionLog.end(), read_.made_log.begin(), read_.made_log.end());
  for (const TEquivalence& row : velmora::Equivalences())
    if (const int count = Equivalences.Count(row.id); count > 0)
      ActionLog.push_back(Format(kTakenAsEqual, std::string(row.name), count));
  ActionLog.insert(ActionLog.end(), proof_.begin(), proof_.end());
}

std::string TExactSync::NothingLeft() const {
  return std::string("0 differences left") + (read_.skipped.empty() ? "" : " in the tables that were compared");
}

bool TExactSync::TablesIdentical() const {
  const bool all_seen = std::ranges::none_of(
      read_.not_seen, [](const TKindsNotSeen& of) { return std::ranges::find(of.kinds, "table") != of.kinds.end(); });
  return changes_.empty() && renames_.empty() && read_.skipped.empty() && read_.not_followed.empty() && all_seen &&
         read_.unmade.empty() && renames_refused_.empty() && !NothingNamed();
}

bool TExactSync::Identical() const {
  return TablesIdentical() && objects_.changes.empty() && objects_.differences.empty() && read_.not_seen.empty();
}

// The table's name before the run.
std::string TExactSync::OldTable(const TRenameChange& change) const {
  for (const TRenameChange& other : renames_)
    if (other.rename.OfTable() && other.rename.to == change.Table()) return other.rename.from;
  return change.Table();
}

// About foreign keys that renames put back, by the names that there are now.
std::vector<TRowQuestion> TExactSync::QuestionsOfRenames() const {
  const TSchema& now = read_.target.schema;
  std::vector<TPlanStatement> put_back;
  for (const TRenameChange& change : renames_) {
    TRename rename = change.rename;
    if (!rename.OfTable()) rename.table = OldTable(change);
    if (data_.mtActions.Find(change.id) == nullptr || rename.OfTable()) continue;
    for (const TTableKey& key : KeysInTheWay(rename, target_server_, now))
      put_back.push_back({"add " + key.key->text.Str(), {}, {}, key.table});
  }
  return RowQuestions({}, now, now, put_back);
}

std::vector<TRenameChange> TExactSync::StruckOutRenames() const {
  std::vector<TRenameChange> struck_out = renames_;
  std::erase_if(struck_out, [this](const TRenameChange& of) { return data_.mtActions.Find(of.id) != nullptr; });
  return struck_out;
}

// Those that are left, without what waits for a rename that is not.
std::vector<TChange> TExactSync::RenamedChanges() const {
  std::vector<TChange> left = Changes();
  std::vector<TObjectChange> none;
  LeaveUnrenamed(StruckOutRenames(), left, none);
  return left;
}

// By the names that there are now: what is wanted has them, too.
std::vector<TRowQuestion> TExactSync::QuestionsByOldNames() const {
  TSchema wanted = read_.reference.schema;
  for (const TRename& rename : RenamesBack()) ApplyRename(rename, target_server_, wanted);
  const TSchema& now = read_.target.schema;
  TEquivalenceUse use = Equivalences;
  std::vector<TChange> changes = SchemaChanges(wanted, now, use);
  velmora::LeaveOut(Wishes.selection, changes, nullptr);
  std::set<std::string> gone;
  for (const TChange& change : changes_) gone.insert(PlaceOf(change, RenamesBack()));
  for (const TChange& change : RenamedChanges()) gone.erase(PlaceOf(change, RenamesBack()));
  for (const TRenameChange& change : StruckOutRenames()) gone.insert(OldTable(change));
  std::erase_if(changes, [&gone](const TChange& change) {
    return gone.contains(change.table) || gone.contains(PlaceOf(change, {}));
  });
  std::vector<TRowQuestion> questions =
      RowQuestions(changes, wanted, now,
                   WithLocks(MakePlan(changes, wanted, now, server_), changes, now, server_, Wishes.locks.algorithm));
  std::ranges::move(QuestionsOfRenames(), std::back_inserter(questions));
  return questions;
}

std::vector<TRowFinding> TExactSync::CheckRows(int seconds) {
  TDBConn& target = Side(connections_.target, kNoTarget);
  std::vector<TRowQuestion> questions = RenamesBack().empty()
                                            ? RowQuestions(RenamedChanges(), read_.reference.schema, Target(), Plan())
                                            : QuestionsByOldNames();
  for (TRowQuestion& question : questions)
    question.needed = Wishes.locks.fast_foreign_keys && question.subject.starts_with("foreign key ");
  return AskRows(questions, target, seconds);
}

std::vector<TChange> TExactSync::Changes() const {
  std::vector<TChange> left;
  std::copy_if(changes_.begin(), changes_.end(), std::back_inserter(left),
               [this](const TChange& change) { return data_.mtActions.Find(change.id) != nullptr; });
  return left;
}

std::vector<TPlanStatement> TExactSync::Plan() const {
  std::vector<TChange> left = Changes();
  std::vector<TObjectChange> objects = ObjectChanges();
  const std::vector<TRenameChange> struck_out = StruckOutRenames();
  LeaveUnrenamed(struck_out, left, objects);
  if (struck_out.empty() && left.size() == changes_.size() && objects.size() == objects_.changes.size()) return plan_;
  return PlanOf(left, objects);
}

std::vector<TObjectChange> TExactSync::ObjectChanges() const {
  std::vector<TObjectChange> left;
  std::ranges::copy_if(objects_.changes, std::back_inserter(left),
                       [this](const TObjectChange& change) { return data_.mtActions.Find(change.id) != nullptr; });
  return left;
}

// A script may drop what it has made.
bool TExactSync::ReferenceIsEmpty() const {
  const auto& skipped = read_.skipped;
  if (read_.reference_left_out || read_.objects_alone) return false;
  return read_.reference.texts.empty() && std::none_of(skipped.begin(), skipped.end(), [](const TSkippedTable& table) {
           return table.side == "reference";
         });
}

std::string TExactSync::ReferenceText(const std::string& table) const { return TextOf(read_.reference.texts, table); }

std::string TExactSync::TargetText(const std::string& table) const { return TextOf(read_.target.texts, table); }

}  // namespace velmora
