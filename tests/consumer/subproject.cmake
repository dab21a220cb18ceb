# Builds the library as a part of another project, by add_subdirectory and by FetchContent, and runs
# a program of that project.
include(${CMAKE_CURRENT_LIST_DIR}/Checks.cmake)
file(REMOVE_RECURSE ${WORK})
foreach(with_fetch_content OFF ON)
  run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/subproject -B ${WORK}/${with_fetch_content}
    -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN} -DQUEND=${ROOT}
    -DWITH_FETCH_CONTENT=${with_fetch_content})
endforeach()
run(${CMAKE_COMMAND} --build ${WORK}/ON)  # both have the same to build
file(GLOB_RECURSE inner ${WORK}/ON/*Static*.a ${WORK}/ON/bin/*)
if(inner)
  message(FATAL_ERROR "The parent got more than the library: ${inner}")
endif()
expect_output("Trying to read unexistent property: height\n" ${WORK}/ON/parent.exe)
