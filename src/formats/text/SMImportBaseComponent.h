// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "core/Dataset.h"

namespace velmora {

// Types of imported columns; a component may give any number.
inline constexpr int kSMString = 0;
inline constexpr int kSMInteger = 1;
inline constexpr int kSMFloat = 2;
inline constexpr int kSMDateTime = 3;
inline constexpr int kSMDate = 4;
inline constexpr int kSMTime = 5;
inline constexpr int kSMBoolean = 6;
inline constexpr int kSMBinary = 7;

struct TSMColumn {
  std::string name;
  int type = kSMString;
  std::int64_t size = 0;  // characters of a string
};
using TSMColumns = std::vector<TSMColumn>;

inline constexpr std::uint32_t kSMFirstOption = 1;  // the lowest bit of Options

// A component that reads a file into a dataset in memory. It tells the columns by OnCreateStructure, which makes the
// fields of the dataset and has the mappings rebuilt, and then adds the rows.
class TSMImportBaseComponent {
 public:
  virtual ~TSMImportBaseComponent() = default;

  std::string SourceFileName;
  TMemDataset* DataSet = nullptr;  // must outlive the component
  std::uint32_t Options = kSMFirstOption;
  bool AnimatedStatus = true;
  bool AbortOnProblem = true;
  std::function<void(TSMImportBaseComponent& component, const TSMColumns& columns)> OnCreateStructure;
  std::vector<std::size_t> Mappings;  // for each field of the dataset the column that fills it, from 0

  virtual void Execute() = 0;      // raises what reading the file raises
  virtual void RebuildMappings();  // fills Mappings for the dataset's fields: column by column
};

}  // namespace velmora
