# package_times.cmake: gives everything that goes into an archive one time:
# SOURCE_DATE_EPOCH, or that of the release.
set(release_time 1795305600)  # 2026-11-22 00:00:00 UTC
if(DEFINED ENV{SOURCE_DATE_EPOCH})
  set(release_time $ENV{SOURCE_DATE_EPOCH})
endif()
file(GLOB_RECURSE staged LIST_DIRECTORIES true
  "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*")
foreach(path IN LISTS staged ITEMS "${CPACK_TEMPORARY_INSTALL_DIRECTORY}")
  execute_process(
    COMMAND touch --no-dereference --date=@${release_time} "${path}"
    COMMAND_ERROR_IS_FATAL ANY)
endforeach()
