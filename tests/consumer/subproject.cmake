# Builds the library as a part of another project, and runs a program of that project.
include(${CMAKE_CURRENT_LIST_DIR}/Checks.cmake)
file(REMOVE_RECURSE ${WORK})
build(${CMAKE_CURRENT_LIST_DIR}/subproject ${WORK} -DQUEND=${ROOT})
file(GLOB_RECURSE inner ${WORK}/*Static*.a ${WORK}/bin/*)
if(inner)
  message(FATAL_ERROR "The parent got more than the library: ${inner}")
endif()
expect_output("${greeting}" ${WORK}/parent.exe)
