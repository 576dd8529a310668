# SPDX-License-Identifier: GPL-3.0-or-later

# What is installed beside the programs: manual pages, completions, icons, what a desktop asks for. It is made at build
# time, out of the companion's own options and docs/man; what a missing tool would make is left out, and said.
find_program(SCDOC scdoc)
find_program(RSVG_CONVERT rsvg-convert)
find_program(GZIP gzip)

set(VELMORA_ZSH_FOLDER "${CMAKE_INSTALL_DATADIR}/zsh/site-functions" CACHE STRING "Where zsh looks for completions")

set(beside "${PROJECT_BINARY_DIR}/beside")
set(beside_files)
file(MAKE_DIRECTORY "${beside}")

# velmora_completion(SHELL NAME FOLDER): what this shell completes of the companion.
function(velmora_completion shell name folder)
  add_custom_command(OUTPUT "${beside}/${name}"
    COMMAND velmora-cli generate ${shell} > "${name}.new" COMMAND ${CMAKE_COMMAND} -E rename "${name}.new" "${name}"
    WORKING_DIRECTORY "${beside}" DEPENDS velmora-cli VERBATIM)
  set(beside_files ${beside_files} "${beside}/${name}" PARENT_SCOPE)
  install(FILES "${beside}/${name}" DESTINATION "${folder}" COMPONENT cli)
endfunction()
velmora_completion(bash velmora-cli "${CMAKE_INSTALL_DATADIR}/bash-completion/completions")
velmora_completion(zsh _velmora-cli "${VELMORA_ZSH_FOLDER}")
velmora_completion(fish velmora-cli.fish "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d")

# velmora_manual(PROGRAM COMPONENT): docs/man/PROGRAM.1.scd as a manual page, with the companion's commands in the place
# of the line @COMMANDS@.
function(velmora_manual program component)
  set(source "${PROJECT_SOURCE_DIR}/docs/man/${program}.1.scd")
  set(page "${program}.1")
  add_custom_command(OUTPUT "${beside}/${page}.gz"
    COMMAND velmora-cli generate scdoc > commands-of-${program}.scd
    COMMAND sed -e "/^@COMMANDS@/{r commands-of-${program}.scd" -e d -e } "${source}" > ${page}.scd
    COMMAND ${SCDOC} < ${page}.scd > ${page}
    COMMAND ${GZIP} -9 -n -f -k ${page}
    WORKING_DIRECTORY "${beside}" DEPENDS velmora-cli "${source}" VERBATIM)
  set(beside_files ${beside_files} "${beside}/${page}.gz" PARENT_SCOPE)
  install(FILES "${beside}/${page}.gz" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT ${component})
endfunction()
if(SCDOC AND GZIP)
  velmora_manual(velmora-cli cli)
else()
  message(STATUS "No scdoc or no gzip: manual pages are left out")
endif()

if(VELMORA_DESKTOP)
  if(SCDOC AND GZIP)
    velmora_manual(velmora desktop)
  endif()
  configure_file("${PROJECT_SOURCE_DIR}/data/velmora.metainfo.xml.in" "${beside}/org.example.velmora.metainfo.xml" @ONLY)
  install(FILES "${beside}/org.example.velmora.metainfo.xml" DESTINATION "${CMAKE_INSTALL_DATADIR}/metainfo" COMPONENT desktop)
  install(FILES "${PROJECT_SOURCE_DIR}/data/velmora.desktop" DESTINATION "${CMAKE_INSTALL_DATADIR}/applications" COMPONENT desktop)
  install(FILES "${PROJECT_SOURCE_DIR}/data/velmora-task.xml" DESTINATION "${CMAKE_INSTALL_DATADIR}/mime/packages" COMPONENT desktop)
  set(icon "${PROJECT_SOURCE_DIR}/src/shell/icons/velmora.svg")
  set(icons "${CMAKE_INSTALL_DATADIR}/icons/hicolor")
  install(FILES "${icon}" DESTINATION "${icons}/scalable/apps" COMPONENT desktop)
  if(RSVG_CONVERT)
    foreach(size 16 22 24 32 48 64 128 256 512)
      set(image "velmora-${size}.png")
      add_custom_command(OUTPUT "${beside}/${image}"
        COMMAND ${RSVG_CONVERT} --width ${size} --height ${size} --output ${image} "${icon}"
        WORKING_DIRECTORY "${beside}" DEPENDS "${icon}" VERBATIM)
      list(APPEND beside_files "${beside}/${image}")
      install(FILES "${beside}/${image}" DESTINATION "${icons}/${size}x${size}/apps" RENAME velmora.png COMPONENT desktop)
    endforeach()
  else()
    message(STATUS "No rsvg-convert: the icon is installed as a drawing alone")
  endif()
endif()

add_custom_target(velmora_beside ALL DEPENDS ${beside_files})
