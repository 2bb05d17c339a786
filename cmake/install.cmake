# The engine library with what it stands on, as a CMake package: find_package(qxvantor), link qxvantor::engine or
# qxvantor::driver.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS dsp engine driver EXPORT qxvantorTargets ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
foreach(folder dsp engine aplugins/qxvantor)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/${folder} DESTINATION include/qxvantor/${folder}/..
    FILES_MATCHING PATTERN "*.h")
endforeach()
install(EXPORT qxvantorTargets NAMESPACE qxvantor:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/qxvantor)
file(WRITE ${PROJECT_BINARY_DIR}/qxvantorConfig.cmake
  "include(\"\${CMAKE_CURRENT_LIST_DIR}/qxvantorTargets.cmake\")\n")
write_basic_package_version_file(${PROJECT_BINARY_DIR}/qxvantorConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/qxvantorConfig.cmake ${PROJECT_BINARY_DIR}/qxvantorConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/qxvantor)
if(TARGET vantor)
  install(TARGETS vantor RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
