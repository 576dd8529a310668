#include "app/Sources.h"

#include "engines/mysql/OfflineEngine.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr std::string_view kScriptExtension = ".sql";

bool EndsIn(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && SameText(text.substr(text.size() - end.size()), end);
}

}  // namespace

std::unique_ptr<TDBConn> MakeSource(const std::string& source) {
  if (EndsIn(source, kScriptExtension)) return std::make_unique<TDBConnMySQLOffline>(source);
  RaiseError(Format("\"%s\" is no source: give a file of creation texts that ends in .sql", source));
}

std::unique_ptr<TDBConn> MakeTarget(const std::string& source) {
  std::unique_ptr<TDBConn> target = MakeSource(source);
  if (target->GetEngine() != kEngineMySQL) RaiseError(Format("\"%s\" cannot be a target: only MySQL can", source));
  return target;
}

}  // namespace velmora
