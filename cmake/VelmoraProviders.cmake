# The OLE DB engines, with those of their providers that are switched on. What a provider needs stays hidden; one that is
# switched off is left out with its tests (tests_without), and connecting says so.
set(hidden)
set(without)
set(have)
set(tests_without)

# velmora_provider(OPTION PREFIX PACKAGES tests...): the provider whose sources and tests begin with PREFIX; further tests
# that need it are named behind.
macro(velmora_provider option prefix packages)
  if(${option})
    pkg_check_modules(${option} REQUIRED IMPORTED_TARGET ${packages})
    list(APPEND hidden PkgConfig::${option})
    list(APPEND have ${option})
  else()
    list(APPEND without "${prefix}[A-Za-z]*")
    list(APPEND tests_without "${prefix}[A-Za-z]*" ${ARGN})
  endif()
endmacro()

velmora_provider(VELMORA_ODBC Odbc odbc)
velmora_provider(VELMORA_MDB Mdb "libmdb;glib-2.0")
velmora_provider(VELMORA_EXCEL Excel freexl "Sheet(Mutation|Engines)Test")
velmora_provider(VELMORA_LOTUS Lotus "libwps-0.4;librevenge-0.0" "Sheet(Mutation|Engines)Test")

velmora_module(engines/oledb LINKS velmora_core velmora_xml HIDDEN ${hidden} WITHOUT ${without})
if(TARGET velmora_engines_oledb)
  target_compile_definitions(velmora_engines_oledb PRIVATE ${have})
endif()
