// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Random sources of an engine: a structure is drawn, and a source that has it is made.

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "foreign/Sketch.h"

namespace velmora::testing {

// What sources of an engine are made in; lives as long as the program.
class TSourceMaker {
 public:
  virtual ~TSourceMaker() = default;
  virtual const TSketchDialect& Dialect() const = 0;
  // Changes the sketch where the engine has it otherwise. `folder` is new and empty. Gives the source as the companion
  // takes it.
  virtual std::string Make(TSketch& sketch, const std::string& folder, TRandom& random) = 0;
};

struct TSourceKind {
  const char* name;
  std::unique_ptr<TSourceMaker> (*make)();
};

// Those that this build can make, one list for each file of makers.
std::vector<TSourceKind> SourceKinds();

std::unique_ptr<TSourceMaker> MakeDbfSources();
std::unique_ptr<TSourceMaker> MakeFoxProSources();
std::unique_ptr<TSourceMaker> MakeDelimitedSources();
std::unique_ptr<TSourceMaker> MakeFixedSources();
std::unique_ptr<TSourceMaker> MakeXlsSources();
std::unique_ptr<TSourceMaker> MakeXlsxSources();
std::unique_ptr<TSourceMaker> MakeAccessSources();
std::unique_ptr<TSourceMaker> MakeFirebirdSources();
std::unique_ptr<TSourceMaker> MakeSqliteSources();
std::unique_ptr<TSourceMaker> MakeOdbcServerSources();
std::unique_ptr<TSourceMaker> MakeSqlServerSources();
std::unique_ptr<TSourceMaker> MakeOracleSources();

}  // namespace velmora::testing
