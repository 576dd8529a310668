// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/server/FirebirdLibrary.h"

#include <dlfcn.h>
#include <firebird/Interface.h>

#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kEntryPoint[] = "fb_get_master_interface";
constexpr char kNoLibrary[] =
    "The Firebird client library %s cannot be loaded: install it (on Debian and Ubuntu the package libfbclient2) (%s)";
constexpr char kNoEntryPoint[] =
    "The Firebird client library %s has no entry point %s: install that of Firebird 3 or later (on Debian and Ubuntu "
    "the "
    "package libfbclient2)";

}  // namespace

// Never closed: the library has exit handlers and threads of its own, which must not lose the ground below them.
Firebird::IMaster& LoadFirebirdLibrary(const std::string& file) {
  void* library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    const char* reason = dlerror();
    RaiseError(Format(kNoLibrary, file, reason == nullptr ? "" : reason));
  }
  void* address = dlsym(library, kEntryPoint);
  if (address == nullptr) RaiseError(Format(kNoEntryPoint, file, kEntryPoint));
  return *reinterpret_cast<decltype(&Firebird::fb_get_master_interface)>(address)();
}

}  // namespace velmora
