# The desktop program: the windows of src/shell over Qt and QScintilla, and what an installed program needs beside it.
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

velmora_program(velmora MAIN src/shell/main.cpp LINKS velmora_shell)

# What a desktop asks for: the entry of the menu, the icon, and the type of task files.
install(FILES "${PROJECT_SOURCE_DIR}/data/velmora.desktop" DESTINATION "${CMAKE_INSTALL_DATADIR}/applications")
install(FILES "${PROJECT_SOURCE_DIR}/data/velmora-task.xml" DESTINATION "${CMAKE_INSTALL_DATADIR}/mime/packages")
install(FILES "${PROJECT_SOURCE_DIR}/src/shell/icons/velmora.svg"
  DESTINATION "${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps")
