# SPDX-License-Identifier: GPL-3.0-or-later

# The desktop program: the windows of src/shell over Qt and QScintilla.
find_package(Qt6 6.4 REQUIRED COMPONENTS Widgets Svg)
find_path(QSCINTILLA_INCLUDE_DIR Qsci/qsciscintilla.h PATHS ${Qt6Widgets_INCLUDE_DIRS} REQUIRED)
find_library(QSCINTILLA_LIBRARY qscintilla2_qt6 REQUIRED)
add_library(QScintilla INTERFACE)
target_include_directories(QScintilla SYSTEM INTERFACE "${QSCINTILLA_INCLUDE_DIR}")
target_link_libraries(QScintilla INTERFACE "${QSCINTILLA_LIBRARY}" Qt6::Widgets)

velmora_module(shell LINKS velmora_report Qt6::Widgets Qt6::Svg QScintilla)
target_compile_definitions(velmora_shell PUBLIC QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII)
set_target_properties(velmora_shell PROPERTIES AUTORCC ON)
target_sources(velmora_shell PRIVATE "${PROJECT_SOURCE_DIR}/src/shell/shell.qrc")

# What the windows say in other languages, as a resource of the program: translations/velmora_LANGUAGE.ts, each. It is
# compiled by hand, as a resource file with sources that are made first would be read before they are there.
find_program(LRELEASE lrelease HINTS "${QT6_INSTALL_PREFIX}/lib/qt6/bin" "${QT6_INSTALL_PREFIX}/bin" REQUIRED)
file(GLOB translations CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/translations/*.ts")
set(translated "${PROJECT_BINARY_DIR}/translations")
set(catalogues)
set(entries)
foreach(source IN LISTS translations)
  cmake_path(GET source STEM name)
  add_custom_command(OUTPUT "${translated}/${name}.qm"
    COMMAND ${LRELEASE} -silent -removeidentical "${source}" -qm "${translated}/${name}.qm" DEPENDS "${source}" VERBATIM)
  list(APPEND catalogues "${translated}/${name}.qm")
  string(APPEND entries "<file>${name}.qm</file>")
endforeach()
file(CONFIGURE OUTPUT "${translated}/translations.qrc" CONTENT "<RCC><qresource prefix=\"/translations\">${entries}</qresource></RCC>\n")
add_custom_command(OUTPUT "${translated}/translations.cpp"
  COMMAND Qt6::rcc --name translations --output "${translated}/translations.cpp" "${translated}/translations.qrc"
  DEPENDS "${translated}/translations.qrc" ${catalogues} VERBATIM)
target_sources(velmora_shell PRIVATE "${translated}/translations.cpp")

velmora_program(velmora COMPONENT desktop MAIN src/shell/main.cpp LINKS velmora_shell)
