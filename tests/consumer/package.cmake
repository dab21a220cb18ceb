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

# The checksums.
file(SHA256 ${zip} sum)
file(READ ${zip}.sha256 stated)
if(NOT stated MATCHES "^${sum} ")
  message(FATAL_ERROR "${zip}.sha256 is not that of the zip.")
endif()
file(STRINGS ${package}/SHA256SUMS lines)
foreach(line IN LISTS lines)
  string(REGEX MATCH "^([0-9a-f]+)  (.*)$" line "${line}")
  file(SHA256 "${package}/${CMAKE_MATCH_2}" sum)
  if(NOT sum STREQUAL CMAKE_MATCH_1)
    message(FATAL_ERROR "SHA256SUMS is wrong about ${CMAKE_MATCH_2}")
  endif()
endforeach()
file(GLOB_RECURSE files ${package}/*)
list(LENGTH files file_count)
list(LENGTH lines line_count)
math(EXPR line_count "${line_count} + 1")  # but for itself
if(NOT file_count EQUAL line_count)
  message(FATAL_ERROR "The zip has ${file_count} files, SHA256SUMS accounts for ${line_count}.")
endif()

# No link of a page leads out of the package.
file(GLOB pages ${package}/*.md ${package}/docs/*.md)
foreach(page IN LISTS pages)
  get_filename_component(folder ${page} DIRECTORY)
  file(READ ${page} text)
  string(REPLACE "](" "link:" text "${text}")
  string(REGEX MATCHALL "link:[^):#]+" links "${text}")
  foreach(link IN LISTS links)
    string(SUBSTRING "${link}" 5 -1 link)
    if(NOT EXISTS "${folder}/${link}")
      message(FATAL_ERROR "${page} has a dead link: ${link}")
    endif()
  endforeach()
endforeach()

# The examples, by CMake. Those of the first module once more from elsewhere, as its page says.
set(settings -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN})
run(${CMAKE_COMMAND} -S ${package}/examples -B ${WORK}/build ${settings})
run(${CMAKE_COMMAND} --build ${WORK}/build)
set(greeting "Trying to read unexistent property: height\n")
expect_output("${greeting}" ${WORK}/build/bin/quick-start.exe)
expect_output("host: every reference was given back" ${WORK}/build/bin/host.exe
  ${package}/examples/modules/text.txt ${package}/examples/modules/settings.txt)
file(COPY ${package}/examples/first-module DESTINATION ${WORK})
run(${CMAKE_COMMAND} -S ${WORK}/first-module -B ${WORK}/first-module/build ${settings}
  -DCMAKE_PREFIX_PATH=${package})
run(${CMAKE_COMMAND} --build ${WORK}/first-module/build)
read_blocks(${package}/docs/first-module.md text printed)
expect_output("${printed_0}" ${WORK}/first-module/build/bin/guests.exe)

# By pkg-config.
set(ENV{PKG_CONFIG_PATH} ${package}/lib/pkgconfig)
execute_process(COMMAND pkg-config --cflags --libs quend-framework
  OUTPUT_VARIABLE flags COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(flags UNIX_COMMAND "${flags}")
run(${COMPILER} ${package}/examples/quick-start/main.cpp -std=c++14
  -o ${package}/bin/by-pkg-config.exe ${flags})
expect_output("${greeting}" ${package}/bin/by-pkg-config.exe)

# MSVC is refused in time.
set(MSVC TRUE)
find_package(QuendFramework QUIET NO_DEFAULT_PATH PATHS ${package})
if(QuendFramework_FOUND OR NOT QuendFramework_NOT_FOUND_MESSAGE MATCHES "from source")
  message(FATAL_ERROR "The package does not refuse MSVC.")
endif()

# So is a compiler for another C runtime; this one has only its macro.
set(MSVC FALSE)
set(CMAKE_CXX_COMPILER ${CMAKE_COMMAND} -E echo "#define _UCRT 1")
find_package(QuendFramework QUIET NO_DEFAULT_PATH PATHS ${package})
if(QuendFramework_FOUND OR NOT QuendFramework_NOT_FOUND_MESSAGE MATCHES "compiler's is ucrt")
  message(FATAL_ERROR "The package does not refuse another C runtime.")
endif()

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
