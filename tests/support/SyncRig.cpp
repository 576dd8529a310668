#include "support/SyncRig.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <utility>

#include "util/Errors.h"

namespace velmora::testing {

TScriptFile::TScriptFile(const std::string& text) {
  path_ = (std::filesystem::temp_directory_path() / "velmora-XXXXXX").string();
  const int file = mkstemp(path_.data());
  if (file < 0) RaiseError("No temporary file");
  close(file);
  WriteFileText(path_, text);
}

TScriptFile::~TScriptFile() {
  std::error_code ignored;
  std::filesystem::remove(path_, ignored);
}

TSyncRig::TSyncRig(std::unique_ptr<TDBConn> reference, std::unique_ptr<TDBConn> target) {
  connections.reference = std::move(reference);
  connections.target = std::move(target);
  connections.reference->Connect();
  connections.target->Connect();
}

TSyncRig::TSyncRig(const std::string& referencePath, const std::string& targetPath)
    : TSyncRig(std::make_unique<TDBConnMySQLOffline>(referencePath),
               std::make_unique<TDBConnMySQLOffline>(targetPath)) {}

void TSyncRig::Compare() {
  sync.SetDatabases(connections.reference.get(), connections.target.get());
  sync.Compare();
}

}  // namespace velmora::testing
