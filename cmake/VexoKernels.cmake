# vexo_add_kernels(<target> <sources> [SETS <set>...])
#
# Compiles each kernel source once per instruction set, into one object library per set, and links the objects
# into <target>. VEXO_KERNEL_SET names the set: it is the namespace that holds everything the source defines.
#
# The flags are those that give the same bits on every set (no contraction of a * b + c) and the loops that were
# measured fastest (unroll-and-jam ruins the convolution loops of GCC 12). No link-time optimisation: it could
# move code of one instruction set into another.
set(VEXO_KERNEL_FLAGS -O3 -fno-math-errno -fno-trapping-math -ffp-contract=off)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  list(APPEND VEXO_KERNEL_FLAGS -fno-loop-unroll-and-jam -Wno-psabi)
endif()
if(VEXO_SANITIZE MATCHES fuzzer)
  # No counters of branches: what leads to new paths is decided outside, and the lines would be several times slower.
  list(APPEND VEXO_KERNEL_FLAGS -fno-sanitize=fuzzer-no-link)
endif()
if(VEXO_PORTABLE_KERNELS)
  set(VEXO_KERNEL_SETS portable)
  add_compile_definitions(VEXO_PORTABLE_KERNELS)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64|amd64")
  set(VEXO_KERNEL_SETS portable avx avx2 avx512)
else()
  set(VEXO_KERNEL_SETS portable)
endif()
# Two sets have no objects: SSE2, which the portable code of x86-64 is made of, and FMA3 with AVX2, which could only
# contract. The function selector serves them by the objects of the portable set and of AVX2.
set(VEXO_KERNEL_FLAGS_portable)
set(VEXO_KERNEL_FLAGS_avx -mavx)
set(VEXO_KERNEL_FLAGS_avx2 -mavx2)
set(VEXO_KERNEL_FLAGS_avx512 -mavx512f -mavx512bw -mavx512dq -mavx512vl -mavx2 -mprefer-vector-width=512)

function(vexo_add_kernels target)
  cmake_parse_arguments(ARG "" "" "SETS" ${ARGN})
  if(NOT ARG_SETS)
    set(ARG_SETS ${VEXO_KERNEL_SETS})
  endif()
  foreach(set IN LISTS ARG_SETS)
    if(NOT set IN_LIST VEXO_KERNEL_SETS)
      continue()
    endif()
    set(objects ${target}_${set})
    add_library(${objects} OBJECT ${ARG_UNPARSED_ARGUMENTS})
    target_compile_definitions(${objects} PRIVATE VEXO_KERNEL_SET=${set} VEXO_KERNEL_SET_${set})
    target_compile_options(${objects} PRIVATE ${VEXO_KERNEL_FLAGS} ${VEXO_KERNEL_FLAGS_${set}})
    target_include_directories(${objects} PRIVATE ${PROJECT_SOURCE_DIR}/include/public ${PROJECT_SOURCE_DIR}/include/private)
    set_target_properties(${objects} PROPERTIES INTERPROCEDURAL_OPTIMIZATION OFF)
    target_sources(${target} PRIVATE $<TARGET_OBJECTS:${objects}>)
    set_property(GLOBAL APPEND PROPERTY VEXO_KERNEL_OBJECT_LIBRARIES ${objects})
  endforeach()
endfunction()
