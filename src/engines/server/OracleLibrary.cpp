// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/server/OracleLibrary.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <map>
#include <mutex>
#include <vector>

#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kFileName[] = "libclntsh.so";
// Clients without the link of the plain name have one of these. Newest first.
constexpr const char* kVersions[] = {"", ".23.1", ".21.1", ".19.1", ".18.1", ".12.1", ".11.1"};
constexpr char kHomeVariable[] = "ORACLE_HOME";

constexpr char kNoLibrary[] =
    "The Oracle client library %s cannot be loaded: install an Oracle client (the basic package of its instant client "
    "is enough) and let ORACLE_HOME name its folder, or make it known to the system's loader (%s)";
constexpr char kNoEntryPoint[] =
    "The Oracle client library %s has no entry point %s: install an Oracle client of release 10.2 or later";

// A full client keeps its libraries in a folder of their own, an instant client beside everything else.
std::vector<std::string> FilesOf(const std::string& home) {
  std::vector<std::string> files;
  for (const std::string& folder : {JoinPath(home, "lib"), home})
    for (const char* version : kVersions) files.push_back(JoinPath(folder, kFileName) + version);
  return files;
}

std::string FileIn(const std::string& home) {
  if (home.empty()) return {};
  for (const std::string& file : FilesOf(home))
    if (access(file.c_str(), R_OK) == 0) return file;
  return {};
}

// `file` gets what was loaded.
void* OpenLibrary(const std::string& home, std::string& file) {
  const char* own = getenv(kHomeVariable);
  file = FileIn(own == nullptr ? "" : own);
  if (file.empty() && !(file = FileIn(home)).empty()) setenv(kHomeVariable, home.c_str(), 1);
  if (!file.empty()) return dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
  for (const char* version : kVersions) {
    file = std::string(kFileName) + version;
    if (void* library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL)) return library;
  }
  file = kFileName;
  return dlopen(kFileName, RTLD_NOW | RTLD_LOCAL);  // for its error
}

class TBinder {
 public:
  TBinder(void* library, const std::string& file) : library_(library), file_(file) {}

  template <class Call>
  void operator()(const char* name, Call& call) const {
    void* address = dlsym(library_, name);
    if (address == nullptr) RaiseError(Format(kNoEntryPoint, file_, name));
    call = reinterpret_cast<Call>(address);
  }

 private:
  void* library_;
  const std::string& file_;
};

TOracleLibrary BindAll(const TBinder& bind) {
  TOracleLibrary calls{};
  bind("OCIEnvNlsCreate", calls.EnvNlsCreate);
  bind("OCIHandleAlloc", calls.HandleAlloc);
  bind("OCIHandleFree", calls.HandleFree);
  bind("OCIAttrSet", calls.AttrSet);
  bind("OCIAttrGet", calls.AttrGet);
  bind("OCIServerAttach", calls.ServerAttach);
  bind("OCIServerDetach", calls.ServerDetach);
  bind("OCISessionBegin", calls.SessionBegin);
  bind("OCISessionEnd", calls.SessionEnd);
  bind("OCIStmtPrepare2", calls.StmtPrepare2);
  bind("OCIStmtRelease", calls.StmtRelease);
  bind("OCIStmtExecute", calls.StmtExecute);
  bind("OCIParamGet", calls.ParamGet);
  bind("OCIDescriptorFree", calls.DescriptorFree);
  bind("OCIDefineByPos", calls.DefineByPos);
  bind("OCIDefineDynamic", calls.DefineDynamic);
  bind("OCIStmtFetch2", calls.StmtFetch2);
  bind("OCITransCommit", calls.TransCommit);
  bind("OCITransRollback", calls.TransRollback);
  bind("OCIErrorGet", calls.ErrorGet);
  return calls;
}

}  // namespace

// Never closed: a client library has exit handlers and threads of its own, which must not lose the ground below them.
const TOracleLibrary& LoadOracleLibrary(const std::string& home) {
  static std::mutex guard;
  static std::map<void*, TOracleLibrary> loaded;
  const std::lock_guard lock(guard);
  std::string file;
  void* library = OpenLibrary(home, file);
  if (library == nullptr) {
    const char* reason = dlerror();
    RaiseError(Format(kNoLibrary, file, reason == nullptr ? "" : reason));
  }
  const auto found = loaded.find(library);
  if (found != loaded.end()) return found->second;
  return loaded.emplace(library, BindAll(TBinder(library, file))).first->second;
}

}  // namespace velmora
