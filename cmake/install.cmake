# The engine library with what it stands on, as a CMake package: find_package(qxvantor), then link qxvantor::driver, or
# qxvantor::engine for the engine alone.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/qxvantor)
install(TARGETS dsp engine driver EXPORT qxvantorTargets ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}/qxvantor)
foreach(folder dsp engine aplugins/qxvantor)
  file(GLOB headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${folder}/*.h)
  install(FILES ${headers} DESTINATION include/qxvantor/${folder})
endforeach()
install(EXPORT qxvantorTargets NAMESPACE qxvantor:: DESTINATION ${package_dir})

file(WRITE ${PROJECT_BINARY_DIR}/qxvantorConfig.cmake
  "include(\"\${CMAKE_CURRENT_LIST_DIR}/qxvantorTargets.cmake\")\n")
write_basic_package_version_file(${PROJECT_BINARY_DIR}/qxvantorConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/qxvantorConfig.cmake ${PROJECT_BINARY_DIR}/qxvantorConfigVersion.cmake
  DESTINATION ${package_dir})

install(TARGETS qxvantor LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/qxvantor)
if(TARGET vantor)
  install(TARGETS vantor RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
