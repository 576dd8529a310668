// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// One target of a fleet and the reference, compared by themselves. An object is for one thread; what the objects of a
// run share is read alone.

#include <cstddef>
#include <memory>
#include <string>

#include "app/Application.h"
#include "app/ExactDialect.h"
#include "sync/MessageLog.h"
#include "sync/Progress.h"
#include "sync/ScriptEditor.h"
#include "util/Clock.h"
#include "util/Lists.h"

namespace velmora {

// What every comparison of a run is asked.
struct TFleetWishes {
  TComparisonWishes comparison{};
  bool for_script = false;  // a script follows: a reference without tables is refused
  bool allow_empty_reference = false;
};

// What a comparison came to, but for the name of the database and sizes: targets with the same id are alike, as the
// same differences are to be seen, for the same statements, with the same reasons why they are unsafe.
struct TFleetFindings {
  std::string id;
  std::size_t changes = 0;     // actions
  std::size_t unsafe = 0;      // of them
  std::size_t statements = 0;  // of the script
  std::string script;          // without the database's own name before names; empty where there is nothing to run
  TStringList unsafe_lines;    // as the single sync tells them
  TStringList remarks;
  std::string structure;  // the lines of the script's header that tell what it was made for
  bool tables_identical = true;
  bool reaches = true;  // the script leaves nothing that a comparison would find
};

class TFleetPair {
 public:
  TFleetPair(std::unique_ptr<TDBConn> reference, std::unique_ptr<TDBConn> target, const TFleetWishes& wishes);

  TApplication& app() { return app_; }
  TLineEditor& editor() { return editor_; }
  TDBConn& Target() { return *app_.connections.target; }

  // Raises EUnreachable where the target's server cannot be reached, and what a comparison raises.
  void Compare();
  bool Identical() const { return app_.Dialect().Identical(); }
  TFleetFindings Findings();  // of targets that differ; leaves the script in the editor

  // The comparison as the exact dialect has it.
  const TExactDialect& Exact() const { return dynamic_cast<const TExactDialect&>(app_.Dialect()); }

 private:
  const TFleetWishes& wishes_;
  TNoProgress progress_;
  TLineEditor editor_;
  TLineLog log_;
  TApplication app_;
};

}  // namespace velmora
