# cpack -G TGZ: the installation below /usr/local in an archive whose bytes
# depend on the sources alone.
set(CPACK_GENERATOR TGZ)
set(CPACK_PACKAGE_NAME libtovan)
set(CPACK_PACKAGE_FILE_NAME
  libtovan-${PROJECT_VERSION}-${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR})
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_INCLUDE_TOPLEVEL_DIRECTORY OFF)
set(CPACK_STRIP_FILES ON)
# libtovan.pc names the place that the archive is unpacked to.
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_PREFIX /usr/local)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/package_times.cmake)
include(CPack)
