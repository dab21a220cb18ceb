# Installs BUILD, builds the consumer project with what was installed, and runs it there.
function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()
file(REMOVE_RECURSE ${WORK})
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/prefix)
run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR} -B ${WORK}/build -G Ninja
  -DCMAKE_BUILD_TYPE=Release -DCMAKE_PREFIX_PATH=${WORK}/prefix
  -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN} -DCMAKE_RUNTIME_OUTPUT_DIRECTORY=${WORK}/prefix/bin)
run(${CMAKE_COMMAND} --build ${WORK}/build)
execute_process(COMMAND ${EMULATOR} ${WORK}/prefix/bin/example.exe
  OUTPUT_VARIABLE printed COMMAND_ERROR_IS_FATAL ANY)
if(NOT printed MATCHES "Trying to read unexistent property: height")
  message(FATAL_ERROR "The example printed: ${printed}")
endif()
