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

# Gives a program or library that is installed its run path, in the build tree already: where the two differ, CMake
# exchanges them when installing and pads the first with colons for that, and the loader takes an empty element for
# the current folder. Libraries from outside the system's folders are found where they were linked.
function(zorvan_run_path name)
  set_target_properties(${name} PROPERTIES
    INSTALL_RPATH "${ARGN}" BUILD_WITH_INSTALL_RPATH ON INSTALL_RPATH_USE_LINK_PATH ON)
endfunction()

# The plug-in finds the core beside itself; zorvan finds the core by this path, in the build tree beside itself, and
# the plug-in beside the core. The others need none of ours.
install(TARGETS zorvan_alpha zorvanGraphics_alpha LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT engine)
zorvan_run_path(zorvan_alpha)
zorvan_run_path(zorvanGraphics_alpha $ORIGIN)
if(TARGET zorvan)
  file(RELATIVE_PATH libraries ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  install(TARGETS zorvan RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
  zorvan_run_path(zorvan $ORIGIN $ORIGIN/${libraries})
endif()
if(TARGET qonvert)
  install(TARGETS qonvert RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
  zorvan_run_path(qonvert)
endif()
