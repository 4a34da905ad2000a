# What is installed, in three components:
#   runtime   the shared library
#   dev       headers, the archive, what pkg-config and find_package ask for
#   tools     the programs
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS tovan_shared
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  COMPONENT runtime NAMELINK_COMPONENT dev)
install(TARGETS tovan
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/lib/
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tovan COMPONENT dev
  FILES_MATCHING PATTERN "*.h"
  PATTERN "private_*.h" EXCLUDE
  PATTERN "ident.h" EXCLUDE)

# The prefix is known when the installation runs.
install(CODE "
  set(OUTPUT [==[${PROJECT_BINARY_DIR}/libtovan.pc]==])
  set(LIBDIR [==[${CMAKE_INSTALL_LIBDIR}]==])
  set(INCLUDEDIR [==[${CMAKE_INSTALL_INCLUDEDIR}]==])
  set(VERSION [==[${PROJECT_VERSION}]==])
  set(DESCRIPTION [==[${PROJECT_DESCRIPTION}]==])"
  COMPONENT dev)
install(SCRIPT ${CMAKE_CURRENT_LIST_DIR}/pkgconfig.cmake COMPONENT dev)
install(FILES ${PROJECT_BINARY_DIR}/libtovan.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/tovan)
set(libdir ${CMAKE_INSTALL_LIBDIR})
set(includedir ${CMAKE_INSTALL_INCLUDEDIR})
configure_package_config_file(
  ${CMAKE_CURRENT_LIST_DIR}/tovan-config.cmake.in
  ${PROJECT_BINARY_DIR}/tovan-config.cmake
  INSTALL_DESTINATION ${package_dir} PATH_VARS libdir includedir
  NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file(
  ${PROJECT_BINARY_DIR}/tovan-config-version.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/tovan-config.cmake
  ${PROJECT_BINARY_DIR}/tovan-config-version.cmake
  DESTINATION ${package_dir} COMPONENT dev)

if(TOVAN_TOOLS)
  install(TARGETS kivs mktraits vop
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
endif()
