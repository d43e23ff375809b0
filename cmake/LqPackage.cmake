include(CMakePackageConfigHelpers)

install(EXPORT LqSymbolTargets
  NAMESPACE Lq::
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/LqSymbol)

configure_package_config_file(cmake/LqSymbolConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/LqSymbolConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/LqSymbol)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/LqSymbolConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/LqSymbolConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/LqSymbolConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/LqSymbol)
