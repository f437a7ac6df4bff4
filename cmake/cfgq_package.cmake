# Install rules for consumers: the CMake package (find_package(cfgq) -> cfgq::cfgq) and the
# pkg-config file. The targets themselves are installed where they are defined.
set(cfgq_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/cfgq)

install(EXPORT cfgqTargets
  NAMESPACE cfgq::
  FILE cfgqTargets.cmake
  DESTINATION ${cfgq_package_dir}
  COMPONENT dev)

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/cfgqConfig.cmake.in
  ${PROJECT_BINARY_DIR}/cfgqConfig.cmake
  INSTALL_DESTINATION ${cfgq_package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/cfgqConfigVersion.cmake
  VERSION ${PROJECT_VERSION}
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/cfgqConfig.cmake ${PROJECT_BINARY_DIR}/cfgqConfigVersion.cmake
  DESTINATION ${cfgq_package_dir} COMPONENT dev)

# cfgq.pc finds the prefix relative to itself, so `cmake --install --prefix` anywhere works.
file(RELATIVE_PATH CFGQ_PC_PREFIX_FROM_PCDIR
  /install-root/${CMAKE_INSTALL_LIBDIR}/pkgconfig /install-root)
string(REGEX REPLACE "/$" "" CFGQ_PC_PREFIX_FROM_PCDIR "${CFGQ_PC_PREFIX_FROM_PCDIR}")
configure_file(${CMAKE_CURRENT_LIST_DIR}/cfgq.pc.in ${PROJECT_BINARY_DIR}/cfgq.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/cfgq.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
  COMPONENT dev)
