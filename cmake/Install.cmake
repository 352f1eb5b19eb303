# What `cmake --install` gives. Components: runtime (library), development (headers, CMake package, pkg-config file),
# headers (a part of development that is there without a build) and tools (dmctl).

include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/dataModule)

install(TARGETS dataModule
  EXPORT dataModuleTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development)

install(DIRECTORY include/dataModule DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT headers
  FILES_MATCHING PATTERN "*.h")
foreach(folder common fileOperator)
  list(TRANSFORM DATAMODULE_PUBLIC_HEADERS_${folder} PREPEND src/${folder}/ OUTPUT_VARIABLE headers)
  install(FILES ${headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/dataModule/${folder} COMPONENT headers)
endforeach()
file(GLOB headers CONFIGURE_DEPENDS platform/*.h)
install(FILES ${headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/dataModule/platform COMPONENT headers)
install(FILES ${DATAMODULE_EVENT_HEADERS} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/dataModule/common COMPONENT headers)

install(EXPORT dataModuleTargets NAMESPACE dataModule:: DESTINATION ${package_dir} COMPONENT development)
configure_package_config_file(cmake/dataModuleConfig.cmake.in dataModuleConfig.cmake
  INSTALL_DESTINATION ${package_dir} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(dataModuleConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/dataModuleConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/dataModuleConfigVersion.cmake
  DESTINATION ${package_dir} COMPONENT development)

# The file finds its prefix from its own place, so that an installed tree may be moved.
if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
  set(pc_prefix ${CMAKE_INSTALL_PREFIX})
else()
  file(RELATIVE_PATH pc_up /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
  string(REGEX REPLACE "/$" "" pc_up ${pc_up})
  set(pc_prefix "\${pcfiledir}/${pc_up}")
endif()
cmake_path(APPEND pc_libdir "\${prefix}" ${CMAKE_INSTALL_LIBDIR})
cmake_path(APPEND pc_includedir "\${prefix}" ${CMAKE_INSTALL_INCLUDEDIR})
configure_file(cmake/dataModule.pc.in dataModule.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/dataModule.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# The tool finds the library in the same tree, wherever that stands.
if(NOT IS_ABSOLUTE ${CMAKE_INSTALL_BINDIR} AND NOT IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
  file(RELATIVE_PATH bin_to_lib /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
  set_target_properties(dmctl PROPERTIES INSTALL_RPATH "$ORIGIN/${bin_to_lib}")
endif()
install(TARGETS dmctl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
if(TARGET dmctl_pages)
  set(pages ${CMAKE_BINARY_DIR}/tools/dmctl/pages)
  install(FILES ${pages}/dmctl DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tools)
  install(FILES ${pages}/dmctl.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
endif()
