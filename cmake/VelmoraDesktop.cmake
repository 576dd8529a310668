# SPDX-License-Identifier: GPL-3.0-or-later

# The desktop program: the windows of src/shell over Qt and QScintilla.
find_package(Qt6 6.4 REQUIRED COMPONENTS Widgets Svg)
find_path(QSCINTILLA_INCLUDE_DIR Qsci/qsciscintilla.h PATHS ${Qt6Widgets_INCLUDE_DIRS} REQUIRED)
find_library(QSCINTILLA_LIBRARY qscintilla2_qt6 REQUIRED)
add_library(QScintilla INTERFACE)
target_include_directories(QScintilla SYSTEM INTERFACE "${QSCINTILLA_INCLUDE_DIR}")
target_link_libraries(QScintilla INTERFACE "${QSCINTILLA_LIBRARY}" Qt6::Widgets)

velmora_module(shell LINKS velmora_app Qt6::Widgets Qt6::Svg QScintilla)
target_compile_definitions(velmora_shell PUBLIC QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII)
set_target_properties(velmora_shell PROPERTIES AUTORCC ON)
target_sources(velmora_shell PRIVATE "${PROJECT_SOURCE_DIR}/src/shell/shell.qrc")

velmora_program(velmora COMPONENT desktop MAIN src/shell/main.cpp LINKS velmora_shell)
