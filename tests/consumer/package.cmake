# Packs BUILD and uses the zip as a stranger does: unpacks it, moves it, builds its examples as they
# stand, by CMake and by pkg-config, and runs them.
include(${CMAKE_CURRENT_LIST_DIR}/Checks.cmake)
file(REMOVE_RECURSE ${WORK})
run(cpack --config ${BUILD}/CPackConfig.cmake -B ${WORK}/packed)
file(GLOB debug_zip ${WORK}/packed/*-debug.zip)
string(REPLACE -debug.zip .zip zip ${debug_zip})
get_filename_component(name ${zip} NAME_WLE)
file(ARCHIVE_EXTRACT INPUT ${zip} DESTINATION ${WORK}/unpacked)
set(package "${WORK}/moved to here")
file(RENAME ${WORK}/unpacked/${name} ${package})

# The checksums, which leave out no file but their own.
run(${CMAKE_COMMAND} -E chdir ${WORK}/packed sha256sum --check ${name}.zip.sha256)
run(${CMAKE_COMMAND} -E chdir ${package} sha256sum --check SHA256SUMS)
file(STRINGS ${package}/SHA256SUMS lines)
list(TRANSFORM lines REPLACE "^[0-9a-f]+  " "${package}/")
file(GLOB_RECURSE files ${package}/*)
list(REMOVE_ITEM files ${lines})
if(NOT files STREQUAL "${package}/SHA256SUMS")
  message(FATAL_ERROR "SHA256SUMS leaves out: ${files}")
endif()

# No link of a page leads out of the package.
file(GLOB pages ${package}/*.md ${package}/docs/*.md)
foreach(page IN LISTS pages)
  get_filename_component(folder ${page} DIRECTORY)
  file(READ ${page} text)
  string(REPLACE "](" "link:" text "${text}")
  string(REGEX MATCHALL "link:[^):#]+" links "${text}")
  list(TRANSFORM links REPLACE "^link:" "")
  foreach(link IN LISTS links)
    if(NOT EXISTS "${folder}/${link}")
      message(FATAL_ERROR "${page} has a dead link: ${link}")
    endif()
  endforeach()
endforeach()

# The examples, by CMake. Those of the first module once more from elsewhere, as its page says.
build(${package}/examples ${WORK}/build)
expect_output("${greeting}" ${WORK}/build/bin/quick-start.exe)
expect_output("host: every reference was given back" ${WORK}/build/bin/host.exe
  ${package}/examples/modules/text.txt ${package}/examples/modules/settings.txt)
file(COPY ${package}/examples/first-module DESTINATION ${WORK})
build(${WORK}/first-module ${WORK}/first-module/build -DCMAKE_PREFIX_PATH=${package})
file(READ ${package}/docs/first-module.md text)
string(REGEX MATCH "\n```text\n([^`]+)```" printed "${text}")
expect_output("${CMAKE_MATCH_1}" ${WORK}/first-module/build/bin/guests.exe)

# By pkg-config.
set(ENV{PKG_CONFIG_PATH} ${package}/lib/pkgconfig)
execute_process(COMMAND pkg-config --cflags --libs quend-framework
  OUTPUT_VARIABLE flags COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(flags UNIX_COMMAND "${flags}")
run(${COMPILER} ${package}/examples/quick-start/main.cpp -std=c++14
  -o ${package}/bin/by-pkg-config.exe ${flags})
expect_output("${greeting}" ${package}/bin/by-pkg-config.exe)

# Compilers that the package is not for are refused in time.
function(expect_refusal reason)
  find_package(QuendFramework QUIET NO_DEFAULT_PATH PATHS ${package})
  if(QuendFramework_FOUND OR NOT QuendFramework_NOT_FOUND_MESSAGE MATCHES "${reason}")
    message(FATAL_ERROR "Not refused because of: ${reason}")
  endif()
endfunction()
set(MSVC TRUE)
expect_refusal("from source")
set(MSVC FALSE)
set(CMAKE_CXX_COMPILER ${CMAKE_COMMAND} -E echo "#define _UCRT 1")  # all that is asked of it
expect_refusal("compiler's is ucrt")

# The DLL leads to its debug information, which knows its lines. Its zip is unpacked over the package.
file(ARCHIVE_EXTRACT INPUT ${debug_zip} DESTINATION ${WORK}/debug)
file(COPY ${WORK}/debug/${name}/ DESTINATION ${package})
file(GLOB library ${package}/bin/Quend_Framework_*.dll)
execute_process(COMMAND ${NM} ${library}.debug OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCH "([0-9a-f]+) T [^\n]*10findObjectEPKc" symbol "${symbols}")
execute_process(COMMAND ${ADDR2LINE} -e ${library} ${CMAKE_MATCH_1}
  OUTPUT_VARIABLE line COMMAND_ERROR_IS_FATAL ANY)
if(NOT line MATCHES "^/quend/src/core/[A-Za-z]*.cpp:[0-9]")
  message(FATAL_ERROR "findObject is at: ${line}")
endif()
