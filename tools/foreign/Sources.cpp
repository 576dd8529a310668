// SPDX-License-Identifier: GPL-3.0-or-later
#include "foreign/Sources.h"

namespace velmora::testing {

std::vector<TSourceKind> SourceKinds() {
  return {
      {"dbf", MakeDbfSources},
      {"foxpro", MakeFoxProSources},
      {"access", MakeAccessSources},
      {"text", MakeDelimitedSources},
      {"fixed", MakeFixedSources},
      {"xls", MakeXlsSources},
      {"xlsx", MakeXlsxSources},
      {"firebird", MakeFirebirdSources},
      {"sqlite", MakeSqliteSources},
      {"mariadb", MakeOdbcServerSources},
      {"sqlserver", MakeSqlServerSources},
      {"oracle", MakeOracleSources},
  };
}

}  // namespace velmora::testing
