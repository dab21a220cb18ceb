# Packs BUILD, unpacks the package, moves it, and builds and runs the consumer project with it.
function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()
file(REMOVE_RECURSE ${WORK})
run(cpack --config ${BUILD}/CPackConfig.cmake -B ${WORK}/packed)
file(GLOB zip ${WORK}/packed/*.zip)
file(ARCHIVE_EXTRACT INPUT ${zip} DESTINATION ${WORK}/unpacked)
get_filename_component(name ${zip} NAME_WLE)
file(RENAME ${WORK}/unpacked/${name} ${WORK}/moved)

run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR} -B ${WORK}/build -G Ninja
  -DCMAKE_BUILD_TYPE=Release -DCMAKE_PREFIX_PATH=${WORK}/moved
  -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN} -DCMAKE_RUNTIME_OUTPUT_DIRECTORY=${WORK}/moved/bin)
run(${CMAKE_COMMAND} --build ${WORK}/build)
execute_process(COMMAND ${EMULATOR} ${WORK}/moved/bin/example.exe
  OUTPUT_VARIABLE printed COMMAND_ERROR_IS_FATAL ANY)
if(NOT printed MATCHES "Trying to read unexistent property: height")
  message(FATAL_ERROR "The example printed: ${printed}")
endif()
