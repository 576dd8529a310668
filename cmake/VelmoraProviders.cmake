# SPDX-License-Identifier: GPL-3.0-or-later

# Files of other programs, ODBC, and the OLE DB engines over both, with what is switched on. What a library needs stays
# hidden; what is switched off is left out with its tests (tests_without), and connecting says so.
set(hidden)
set(without)
set(have)
set(tests_without)

# velmora_provider(OPTION PREFIX PACKAGES): a kind of source whose own sources and tests begin with PREFIX.
macro(velmora_provider option prefix packages)
  if(${option})
    pkg_check_modules(${option} REQUIRED IMPORTED_TARGET ${packages})
    list(APPEND hidden PkgConfig::${option})
    list(APPEND have ${option})
  else()
    list(APPEND without "${prefix}[A-Za-z]*")
    list(APPEND tests_without "${prefix}[A-Za-z]*")
  endif()
endmacro()

velmora_provider(VELMORA_MDB Mdb "libmdb;glib-2.0")
velmora_provider(VELMORA_LOTUS Lotus "libwps-0.4;librevenge-0.0")

velmora_module(formats LINKS velmora_core HIDDEN ${hidden} LibXml2::LibXml2 PkgConfig::LIBZIP WITHOUT ${without})
velmora_module(sandbox LINKS velmora_formats)
set(odbc)
if(VELMORA_ODBC)
  pkg_check_modules(VELMORA_ODBC REQUIRED IMPORTED_TARGET odbc)
  list(APPEND have VELMORA_ODBC)
  velmora_module(odbc LINKS velmora_formats HIDDEN PkgConfig::VELMORA_ODBC)
  set(odbc velmora_odbc)
else()
  list(APPEND tests_without "Odbc[A-Za-z]*")
endif()
velmora_module(engines/oledb LINKS velmora_sandbox velmora_xml ${odbc})
target_compile_definitions(velmora_sandbox PRIVATE ${have})
target_compile_definitions(velmora_engines_oledb PRIVATE ${have})
