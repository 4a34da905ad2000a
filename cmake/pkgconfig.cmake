# pkgconfig.cmake: writes OUTPUT, the description of the library for
# pkg-config, for an installation below CMAKE_INSTALL_PREFIX.
#   LIBDIR, INCLUDEDIR    absolute, or below the prefix
#   VERSION, DESCRIPTION  of the library
get_filename_component(prefix "${CMAKE_INSTALL_PREFIX}" ABSOLUTE)
foreach(dir LIBDIR INCLUDEDIR)
  if(NOT IS_ABSOLUTE "${${dir}}")
    set(${dir} "\${prefix}/${${dir}}")
  endif()
endforeach()

file(WRITE "${OUTPUT}" "\
prefix=${prefix}
libdir=${LIBDIR}
includedir=${INCLUDEDIR}

Name: libtovan
Description: ${DESCRIPTION}
Version: ${VERSION}
Libs: -L\${libdir} -ltovan
Cflags: -I\${includedir}
")
