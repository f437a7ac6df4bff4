# The Debian packages and the RPMs, one per install component, as each system splits a library:
#   component  .deb          .rpm         contents
#   libs       libcfgq1      cfgq-libs    libcfgq.so.1, the host stand-ins in the private directory
#   dev        libcfgq-dev   cfgq-devel   headers, libcfgq.so, the CMake package, cfgq.pc
#   tool       cfgq          cfgq         the cfgq tool, its manual page and shell completions
#   tcl        tcl-cfgq      tcl-cfgq     the Tcl package ::korvel::gui_settings and cfgqsh
# scripts/package.sh configures a tree per system (CFGQ_PACKAGE_LAYOUT) and runs cpack there.
set(cfgq_package_release 1)
set(CFGQ_PACKAGE_CONTACT "cfgq maintainers <cfgq@korvel.example>" CACHE STRING
    "maintainer named in the packages")

# Debian wants its copyright file and changelog in every package's documentation directory.
if(CFGQ_PACKAGE_LAYOUT STREQUAL "deb")
  file(STRINGS ${CMAKE_CURRENT_LIST_DIR}/packaging/changelog.Debian cfgq_changelog_top LIMIT_COUNT 1)
  if(NOT cfgq_changelog_top MATCHES "^cfgq \\(${PROJECT_VERSION}-${cfgq_package_release}\\) ")
    message(FATAL_ERROR "packaging/changelog.Debian does not start with the version "
                        "${PROJECT_VERSION}-${cfgq_package_release}")
  endif()
  set(cfgq_changelog_gz ${PROJECT_BINARY_DIR}/packaging/changelog.Debian.gz)
  add_custom_command(OUTPUT ${cfgq_changelog_gz}
    COMMAND ${CMAKE_COMMAND} -E copy ${CMAKE_CURRENT_LIST_DIR}/packaging/changelog.Debian
            ${PROJECT_BINARY_DIR}/packaging/changelog.Debian
    COMMAND gzip -9nf ${PROJECT_BINARY_DIR}/packaging/changelog.Debian
    DEPENDS ${CMAKE_CURRENT_LIST_DIR}/packaging/changelog.Debian)
  add_custom_target(cfgq_changelog ALL DEPENDS ${cfgq_changelog_gz})
  foreach(component_package libs:libcfgq1 dev:libcfgq-dev tool:cfgq tcl:tcl-cfgq)
    string(REPLACE ":" ";" component_package ${component_package})
    list(GET component_package 0 component)
    list(GET component_package 1 package)
    install(FILES ${CMAKE_CURRENT_LIST_DIR}/packaging/copyright ${cfgq_changelog_gz}
      DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${package} COMPONENT ${component})
  endforeach()
endif()

set(CPACK_PACKAGE_NAME cfgq)
set(CPACK_PACKAGE_VENDOR Korvel)
set(CPACK_PACKAGE_CONTACT "${CFGQ_PACKAGE_CONTACT}")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL libs dev tool tcl)
set(CPACK_COMPONENT_DEV_DEPENDS libs)
set(CPACK_COMPONENT_TOOL_DEPENDS libs)
set(CPACK_COMPONENT_TCL_DEPENDS libs)

# Descriptions: a summary, then lines of at most 80 characters.
set(cfgq_about "cfgq keeps the user settings of the Korvel design suite's applications in\n\
one file per user, with a main key per suite version and migration between\nversions.")
set(cfgq_libs_summary "Korvel design suite user-settings library")
set(cfgq_libs_about "${cfgq_about}\nThis package holds the shared library and the suite's host stand-ins\n\
that it loads.")
set(cfgq_dev_summary "Korvel design suite user-settings library - development files")
set(cfgq_dev_about "${cfgq_about}\nThis package holds the headers, the CMake package (find_package(cfgq))\n\
and the pkg-config file.")
set(cfgq_tool_summary "command-line tool for the Korvel design suite's user settings")
set(cfgq_tool_about "${cfgq_about}\nThe cfgq tool reads, writes, exports, backs up, watches and checks the\n\
settings file, and sets persistent environment variables.")
set(cfgq_tcl_summary "Tcl package for the Korvel design suite's user settings")
set(cfgq_tcl_about "${cfgq_about}\nThis package holds the Tcl package ::korvel::gui_settings for a stock\n\
tclsh, and the shell cfgqsh, which has it loaded.")

# Debian: Depends from the libraries' needs (dpkg-shlibdeps), one package on another at the
# same version, shlibs and the ldconfig trigger for the library (packaging/triggers).
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${cfgq_package_release})
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
# dpkg-shlibdeps runs in each package's staging directory; libcfgq and the host stand-ins are
# staged beside it, in the libs package's (their dependency is the libcfgq1 one above).
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
  ../libs${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}
  ../libs${CMAKE_INSTALL_PREFIX}/${CFGQ_INSTALL_PRIVATE_LIBDIR})
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_LIBS_PACKAGE_NAME libcfgq1)
set(CPACK_DEBIAN_LIBS_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBS_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/packaging/triggers)
set(CPACK_DEBIAN_DEV_PACKAGE_NAME libcfgq-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "qt6-base-dev (>= 6.4)")
set(CPACK_DEBIAN_TOOL_PACKAGE_NAME cfgq)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TCL_PACKAGE_NAME tcl-cfgq)
set(CPACK_DEBIAN_TCL_PACKAGE_SECTION interpreters)
foreach(component libs dev tool tcl)
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_DESCRIPTION "${cfgq_${component}_summary}\n${cfgq_${component}_about}")
  set(CPACK_RPM_${upper}_PACKAGE_SUMMARY "${cfgq_${component}_summary}")
  set(CPACK_RPM_${upper}_PACKAGE_DESCRIPTION "${cfgq_${component}_about}")
endforeach()

# RPM: Requires from the libraries' needs (rpm's own dependency finder).
set(CPACK_RPM_COMPONENT_INSTALL ON)
set(CPACK_RPM_FILE_NAME RPM-DEFAULT)
set(CPACK_RPM_PACKAGE_RELEASE ${cfgq_package_release})
set(CPACK_RPM_PACKAGE_LICENSE "Proprietary")
set(CPACK_RPM_PACKAGE_GROUP "System Environment/Libraries")
set(CPACK_RPM_CHANGELOG_FILE ${CMAKE_CURRENT_LIST_DIR}/packaging/changelog.rpm)
set(CPACK_RPM_LIBS_PACKAGE_NAME cfgq-libs)
set(CPACK_RPM_DEV_PACKAGE_NAME cfgq-devel)
set(CPACK_RPM_DEV_PACKAGE_REQUIRES "qt6-qtbase-devel >= 6.4")
set(CPACK_RPM_TOOL_PACKAGE_NAME cfgq)
set(CPACK_RPM_TCL_PACKAGE_NAME tcl-cfgq)
foreach(component DEV TOOL TCL)
  list(APPEND CPACK_RPM_${component}_PACKAGE_REQUIRES
       "cfgq-libs = ${PROJECT_VERSION}-${cfgq_package_release}")
  string(REPLACE ";" ", " CPACK_RPM_${component}_PACKAGE_REQUIRES
         "${CPACK_RPM_${component}_PACKAGE_REQUIRES}")
endforeach()
# The host stand-ins are provided to no one else; the package's files list only its own files
# (no build-id links).
set(CPACK_RPM_SPEC_MORE_DEFINE "%global __provides_exclude_from ^${CMAKE_INSTALL_PREFIX}/${CFGQ_INSTALL_PRIVATE_LIBDIR}/.*$
%global __requires_exclude ^libkorvel_host[.]so
%define _build_id_links none")
# The system's packages own these directories.
set(CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION
  /usr/${CMAKE_INSTALL_LIBDIR}/cmake /usr/${CMAKE_INSTALL_LIBDIR}/pkgconfig
  /usr/${CMAKE_INSTALL_LIBDIR}/tcl8.6 /usr/share/man /usr/share/man/man1 /usr/share/bash-completion
  /usr/share/bash-completion/completions /usr/share/zsh /usr/share/zsh/site-functions)

include(CPack)
