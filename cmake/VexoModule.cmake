# vexo_harden(<target>): for what reads files of strangers. The stack protector and checked library calls end the
# program where an overflow would take it over.
function(vexo_harden target)
  target_compile_options(${target} PRIVATE -fstack-protector-strong)
  if(NOT VEXO_SANITIZE)
    target_compile_options(${target} PRIVATE $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE>
      $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
  endif()
endfunction()

# vexo_add_module(<name> [FAMILY <folder>] [PUBLIC <targets>] [PRIVATE <targets>])
#
# One shared library, alias vexo::<name>, of everything below src/[<folder>/]<name>. Sources that end in
# .kernel.cpp are compiled once per instruction set instead.
function(vexo_add_module name)
  cmake_parse_arguments(ARG "" "FAMILY" "PUBLIC;PRIVATE" ${ARGN})
  set(path ${name})
  if(ARG_FAMILY)
    set(path ${ARG_FAMILY}/${name})
  endif()
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/${path}/*.cpp)
  set(kernels ${sources})
  list(FILTER sources EXCLUDE REGEX "\\.kernel\\.cpp$")
  list(FILTER kernels INCLUDE REGEX "\\.kernel\\.cpp$")

  add_library(${name} SHARED ${sources})
  add_library(vexo::${name} ALIAS ${name})
  target_compile_features(${name} PUBLIC cxx_std_17)
  target_include_directories(${name}
    PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include/public> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/vexo>
    PRIVATE ${PROJECT_SOURCE_DIR}/include/private)
  target_link_libraries(${name} PUBLIC ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE})
  target_link_options(${name} PRIVATE -Wl,--no-undefined)
  if(VEXO_SANITIZE)
    target_link_options(${name} PRIVATE -Wl,-z,undefs)
  endif()
  if(ARG_FAMILY)
    # A program that knows filters by name only uses no symbol of their library, which must stay all the same.
    target_link_options(${name} INTERFACE LINKER:--no-as-needed)
  endif()
  set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
  if(kernels)
    vexo_add_kernels(${name} ${kernels})
  endif()

  install(TARGETS ${name} EXPORT ${name}Targets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/public/${path} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vexo/${ARG_FAMILY})
  install(EXPORT ${name}Targets NAMESPACE vexo:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/VEXO)
  set_property(GLOBAL APPEND PROPERTY VEXO_MODULES ${name})
endfunction()
