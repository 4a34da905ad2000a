# man.cmake: manual pages, found under every name that they explain, and what
# completes the arguments of the programs.
#   man/NAME.SECTION   the pages
#   build/.../man      the pages as they are installed: manN/NAME.SECTION, and
#                      for each further name of a page a file that points to it
#   tools/completion   for bash and zsh, made by the script `generate`
include(GNUInstallDirs)

set(manual ${PROJECT_BINARY_DIR}/man)
file(REMOVE_RECURSE ${manual})
file(GLOB pages CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/man/*.[1-9]*)
foreach(page ${pages})
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${page})
  get_filename_component(file ${page} NAME)
  string(REGEX MATCH "\\.([1-9])[a-z]*$" suffix ${file})
  set(folder man${CMAKE_MATCH_1})
  file(COPY ${page} DESTINATION ${manual}/${folder})

  # The NAME section: ".Nm first ,", ".Nm second", ".Nd what they are for".
  file(READ ${page} text)
  string(FIND "${text}" "\n.Nd " end)
  string(SUBSTRING "${text}" 0 ${end} text)
  string(REGEX MATCHALL "\n\\.Nm [^ \n]+" names "${text}")
  foreach(name ${names})
    string(SUBSTRING ${name} 5 -1 name)
    if(NOT EXISTS ${PROJECT_SOURCE_DIR}/man/${name}${suffix})
      file(WRITE ${manual}/${folder}/${name}${suffix} ".so ${folder}/${file}\n")
    endif()
  endforeach()
endforeach()

if(TOVAN_INSTALL)
  install(DIRECTORY ${manual}/man3 ${manual}/man7
    DESTINATION ${CMAKE_INSTALL_MANDIR} COMPONENT dev)
  install(DIRECTORY ${manual}/man1 ${manual}/man5
    DESTINATION ${CMAKE_INSTALL_MANDIR} COMPONENT tools)
  set(TOVAN_ZSH_FOLDER ${CMAKE_INSTALL_DATADIR}/zsh/site-functions
    CACHE STRING "where completions for zsh are installed")
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/tools/completion/bash/
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
    COMPONENT tools)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/tools/completion/zsh/
    DESTINATION ${TOVAN_ZSH_FOLDER} COMPONENT tools)
endif()
