// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The fuzzers. Each takes any bytes, has a reader read them as a stranger's, and uses all that comes of it. An error
// with a message is a right end; a crash, a hang, memory without bound and every other exception are findings.

#include <string_view>

namespace velmora::fuzzing {

using THarness = void (*)(std::string_view input);

struct TNamedHarness {
  const char* name;  // of its folder in fuzz/corpus too
  THarness run;
};

void FuzzAccess(std::string_view input);
void FuzzAnswers(std::string_view input);
void FuzzCreation(std::string_view input);
void FuzzDbf(std::string_view input);
void FuzzExcel(std::string_view input);
void FuzzLists(std::string_view input);
void FuzzLotus(std::string_view input);
void FuzzNames(std::string_view input);
void FuzzParadox(std::string_view input);
void FuzzPlan(std::string_view input);
void FuzzStandard(std::string_view input);
void FuzzStatements(std::string_view input);
void FuzzTasks(std::string_view input);
void FuzzText(std::string_view input);
void FuzzWire(std::string_view input);

inline constexpr TNamedHarness kHarnesses[] = {
#ifdef VELMORA_MDB
    {"access", FuzzAccess},
#endif
    {"answers", FuzzAnswers},       {"creation", FuzzCreation}, {"dbf", FuzzDbf},   {"excel", FuzzExcel},
    {"lists", FuzzLists},
#ifdef VELMORA_LOTUS
    {"lotus", FuzzLotus},
#endif
    {"names", FuzzNames},           {"paradox", FuzzParadox},   {"plan", FuzzPlan}, {"standard", FuzzStandard},
    {"statements", FuzzStatements}, {"tasks", FuzzTasks},       {"text", FuzzText}, {"wire", FuzzWire},
};

}  // namespace velmora::fuzzing
