# Where an install puts each part, relative to the prefix. CFGQ_PACKAGE_LAYOUT names the system
# a package is made for (scripts/package.sh sets it): deb or rpm put the Tcl package and the zsh
# completion where that system's shells look; empty (a plain `cmake --install`) keeps them
# under the library directory and share/zsh/site-functions.
set(CFGQ_PACKAGE_LAYOUT "" CACHE STRING "system the install is packaged for: empty, deb or rpm")
if(NOT CFGQ_PACKAGE_LAYOUT MATCHES "^(|deb|rpm)$")
  message(FATAL_ERROR "CFGQ_PACKAGE_LAYOUT must be empty, deb or rpm")
endif()

# The host stand-ins are the suite's own infrastructure, not a library for others: they live in a
# directory of the package's own beside libcfgq, which the installed binaries name relative to
# their own place.
set(CFGQ_INSTALL_PRIVATE_LIBDIR ${CMAKE_INSTALL_LIBDIR}/cfgq)

# Debian's tclsh looks in /usr/lib/tcltk/<multiarch>, Red Hat's in /usr/lib64/tcl8.6.
if(CFGQ_PACKAGE_LAYOUT STREQUAL "deb" AND CMAKE_INSTALL_LIBDIR MATCHES "^lib/(.+)$")
  set(cfgq_tcl_dir lib/tcltk/${CMAKE_MATCH_1})
else()
  set(cfgq_tcl_dir ${CMAKE_INSTALL_LIBDIR}/tcl8.6)
endif()
set(CFGQ_INSTALL_TCLDIR ${cfgq_tcl_dir}/gui_settings)

# bash-completion loads completions on demand from the directory its pkg-config file names; an
# install under another prefix puts the script at the same place below that prefix.
set(CFGQ_INSTALL_BASH_COMPLETIONDIR ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
find_package(PkgConfig QUIET)
if(PKG_CONFIG_FOUND)
  execute_process(COMMAND ${PKG_CONFIG_EXECUTABLE} --variable=completionsdir bash-completion
                  OUTPUT_VARIABLE cfgq_completions OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  execute_process(COMMAND ${PKG_CONFIG_EXECUTABLE} --variable=prefix bash-completion
                  OUTPUT_VARIABLE cfgq_completions_prefix OUTPUT_STRIP_TRAILING_WHITESPACE
                  ERROR_QUIET)
  if(cfgq_completions_prefix AND cfgq_completions MATCHES "^${cfgq_completions_prefix}/(.+)$")
    set(CFGQ_INSTALL_BASH_COMPLETIONDIR ${CMAKE_MATCH_1})
  endif()
endif()
if(CFGQ_PACKAGE_LAYOUT STREQUAL "deb")
  set(CFGQ_INSTALL_ZSH_COMPLETIONDIR ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
else()
  set(CFGQ_INSTALL_ZSH_COMPLETIONDIR ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
endif()

# Library search paths. CMake would build a binary with its build-tree entries and edit them at
# install time, padding the built entries with empty ones to make room; the loader reads an
# empty entry as the current directory. So the build tree keeps the installed layout of the
# libraries instead (libcfgq in <build>/LIBDIR, the host stand-ins in <build>/LIBDIR/cfgq, the
# tools one level below <build> as bin is below the prefix), and an installed binary is built
# with the very $ORIGIN-relative entries it is installed with.
set(CFGQ_BUILD_LIBDIR ${PROJECT_BINARY_DIR}/${CMAKE_INSTALL_LIBDIR})
set(CFGQ_BUILD_PRIVATE_LIBDIR ${PROJECT_BINARY_DIR}/${CFGQ_INSTALL_PRIVATE_LIBDIR})

# cfgq_private_runpath(target installed_dir): the installed target, which sits in installed_dir,
# finds the host stand-ins and libcfgq relative to its own place, and nowhere else.
function(cfgq_private_runpath target installed_dir)
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "EXECUTABLE")
    get_target_property(built_dir ${target} RUNTIME_OUTPUT_DIRECTORY)
  else()
    get_target_property(built_dir ${target} LIBRARY_OUTPUT_DIRECTORY)
  endif()
  if(NOT built_dir)
    get_target_property(built_dir ${target} BINARY_DIR)
  endif()
  set(entries "")
  foreach(libdir ${CFGQ_INSTALL_PRIVATE_LIBDIR} ${CMAKE_INSTALL_LIBDIR})
    file(RELATIVE_PATH installed /prefix/${installed_dir} /prefix/${libdir})
    file(RELATIVE_PATH built ${built_dir} ${PROJECT_BINARY_DIR}/${libdir})
    if(NOT installed STREQUAL built)
      message(FATAL_ERROR "${target} is built in ${built_dir}, which does not stand to "
                          "${libdir} as ${installed_dir} does in an install")
    endif()
    string(REGEX REPLACE "/$" "" installed "${installed}")
    if(installed STREQUAL "")
      continue()
    endif()
    list(APPEND entries "$ORIGIN/${installed}")
  endforeach()
  set_target_properties(${target} PROPERTIES INSTALL_RPATH "${entries}"
                        BUILD_WITH_INSTALL_RPATH ON)
endfunction()
