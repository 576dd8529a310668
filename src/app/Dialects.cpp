// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Dialects.h"

#include <algorithm>

#include "app/ExactDialect.h"
#include "app/StandardDialect.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kUnhandledDialect[] = "OpenTask: Unhandled dialect %s";
constexpr char kExactAlone[] = "--%s belongs to the exact dialect (--dialect exact)";

template <class Kind>
std::unique_ptr<TDialect> Make(const TDialectParts& parts) {
  return std::make_unique<Kind>(parts);
}

// In the order in which the command line lists them.
constexpr TDialectRow kDialects[] = {
    {EDialect::Automatic, "auto", nullptr, "Automatic dialect", "acAutomaticDialect",
     "The exact dialect, but for servers before MySQL 5.0", nullptr},
    {EDialect::Standard, "standard", "standard", "Standard dialect", "acStandardDialect",
     "The statements that the program has always written, for servers before MySQL 5.0 and for exact repetition",
     Make<TStandardDialect>},
    {EDialect::Exact, "exact", "exact", "Exact dialect", "acExactDialect",
     "Compare creation texts without loss, and write a script for the servers of today", Make<TExactDialect>},
};

}  // namespace

std::span<const TDialectRow> Dialects() { return kDialects; }

const TDialectRow& DialectRow(EDialect id) { return *std::ranges::find(kDialects, id, &TDialectRow::id); }

const TDialectRow& StoredDialect(const std::optional<std::string>& word) {
  const auto* found = std::ranges::find(kDialects, word, &TDialectRow::Stored);
  if (found == std::end(kDialects)) RaiseError(Format(kUnhandledDialect, word.value_or("")));
  return *found;
}

void RaiseExactAlone(const std::string& option) { RaiseError(Format(kExactAlone, option)); }

}  // namespace velmora
