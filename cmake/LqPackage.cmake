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

# pkg-config: the same libraries, for builds without CMake. The prefix is
# found from the file's own place, so the tree may be installed anywhere.
file(RELATIVE_PATH lq_prefix_from_pcdir ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
file(RELATIVE_PATH lq_libdir_from_prefix ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH lq_includedir_from_prefix ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
set(lq_pc_libraries "-lLqSymbol -lLqGraphics -lLqCompactFile -lLqToolkit -lLqStream -lLqBase")
if(LQ_BUILD_TOOLS)
  string(PREPEND lq_pc_libraries "-lLqExamples ")
endif()
configure_file(cmake/lqsymbol.pc.in ${CMAKE_CURRENT_BINARY_DIR}/lqsymbol.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/lqsymbol.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
