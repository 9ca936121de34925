# Installs the CMake package (find_package(VEXO COMPONENTS ...)) and the pkg-config file. Both find everything else
# relative to where they lie, so an installed tree may be moved.
include(CMakePackageConfigHelpers)
get_property(VEXO_MODULES GLOBAL PROPERTY VEXO_MODULES)
set(VEXO_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/VEXO)

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/VEXOConfig.cmake.in ${PROJECT_BINARY_DIR}/VEXOConfig.cmake
  INSTALL_DESTINATION ${VEXO_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/VEXOConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/VEXOConfig.cmake ${PROJECT_BINARY_DIR}/VEXOConfigVersion.cmake
  DESTINATION ${VEXO_CMAKE_DIR})

file(RELATIVE_PATH VEXO_PC_TO_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" VEXO_PC_TO_PREFIX ${VEXO_PC_TO_PREFIX})
list(REVERSE VEXO_MODULES)
list(TRANSFORM VEXO_MODULES PREPEND "-l" OUTPUT_VARIABLE VEXO_PC_LIBS)
list(JOIN VEXO_PC_LIBS " " VEXO_PC_LIBS)
configure_file(${PROJECT_SOURCE_DIR}/cmake/vexo.pc.in ${PROJECT_BINARY_DIR}/vexo.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/vexo.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
