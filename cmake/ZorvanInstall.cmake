# cmake --install: the texture library with its C headers, a CMake package and a pkg-config file; the
# engine's libraries; the programs.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(zorvan_include_dir ${CMAKE_INSTALL_INCLUDEDIR}/zorvan)
set(zorvan_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/zorvan)

# The component "texture" is what find_package(zorvan) gives.
set_target_properties(zorvan_texture PROPERTIES EXPORT_NAME texture)
target_include_directories(zorvan_texture INTERFACE $<INSTALL_INTERFACE:${zorvan_include_dir}>)
install(TARGETS zorvan_texture EXPORT zorvanTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT texture)
install(FILES texconv/qonvert.h DESTINATION ${zorvan_include_dir}/texconv COMPONENT texture)
install(FILES texcompress/texcompress.h DESTINATION ${zorvan_include_dir}/texcompress COMPONENT texture)
install(EXPORT zorvanTargets NAMESPACE zorvan:: DESTINATION ${zorvan_package_dir} COMPONENT texture)

configure_package_config_file(cmake/zorvanConfig.cmake.in ${PROJECT_BINARY_DIR}/zorvanConfig.cmake
  INSTALL_DESTINATION ${zorvan_package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zorvanConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/zorvanConfig.cmake ${PROJECT_BINARY_DIR}/zorvanConfigVersion.cmake
  DESTINATION ${zorvan_package_dir} COMPONENT texture)

configure_file(cmake/zorvan.pc.in ${PROJECT_BINARY_DIR}/zorvan.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zorvan.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT texture)

# The plug-in finds the core beside itself.
set_target_properties(zorvanGraphics_alpha PROPERTIES INSTALL_RPATH "$ORIGIN")
install(TARGETS zorvan_alpha zorvanGraphics_alpha LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT engine)
# zorvan finds the core by this path and the plug-in beside the core.
foreach(tool IN ITEMS qonvert zorvan)
  if(TARGET ${tool})
    set_target_properties(${tool} PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
    install(TARGETS ${tool} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
  endif()
endforeach()
