# SPDX-License-Identifier: GPL-3.0-or-later

# Run by cpack over what it is about to pack: files that were copied or made meanwhile have the time of the release, so
# that two builds of it give the same packages.
if(DEFINED ENV{SOURCE_DATE_EPOCH})
  execute_process(COMMAND find "${CPACK_TEMPORARY_DIRECTORY}" -exec touch --no-dereference "--date=@$ENV{SOURCE_DATE_EPOCH}" {} +
    COMMAND_ERROR_IS_FATAL ANY)
endif()
