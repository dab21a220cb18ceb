set(greeting "Trying to read unexistent property: height\n")  # of the first example

function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# Builds a project; the rest are settings.
function(build source folder)
  run(${CMAKE_COMMAND} -S ${source} -B ${folder} -G Ninja -DCMAKE_BUILD_TYPE=Release
    -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN} ${ARGN})
  run(${CMAKE_COMMAND} --build ${folder})
endfunction()

# Runs a program for Windows, which must print `text`.
function(expect_output text)
  execute_process(COMMAND ${EMULATOR} ${ARGN} OUTPUT_VARIABLE printed COMMAND_ERROR_IS_FATAL ANY)
  string(REPLACE "\r" "" printed "${printed}")
  string(FIND "${printed}" "${text}" place)
  if(place EQUAL -1)
    message(FATAL_ERROR "${ARGN} printed:\n${printed}\ninstead of:\n${text}")
  endif()
endfunction()
