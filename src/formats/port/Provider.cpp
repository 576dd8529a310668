#include "formats/port/Provider.h"

#include "util/Errors.h"

namespace velmora {

namespace {

constexpr char kCannotCreate[] = "A new database cannot be made here";

}  // namespace

void TOLEDBProvider::CreateDataSource() { RaiseError(kCannotCreate); }

}  // namespace velmora
