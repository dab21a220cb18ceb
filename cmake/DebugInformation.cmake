# A release's DLL carries no debug information, but a link to the file that does: a debugger reads
# Quend_Framework_<version>.dll.debug when it lies beside the DLL.
if(CMAKE_BUILD_TYPE STREQUAL "Release")
  # Two builds are byte-equal wherever and whenever they are made: no path of the build machine,
  # and no time stamp, which objcopy takes from this variable.
  target_compile_options(QuendFramework PRIVATE $<$<COMPILE_LANGUAGE:CXX>:-g
    -ffile-prefix-map=${PROJECT_SOURCE_DIR}=/quend
    -ffile-prefix-map=${PROJECT_BINARY_DIR}=/quend/build>)
  set(objcopy ${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=0 ${CMAKE_OBJCOPY})
  set(file Quend_Framework_${PROJECT_VERSION}.dll)
  add_custom_command(TARGET QuendFramework POST_BUILD
    WORKING_DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}
    COMMAND ${objcopy} --only-keep-debug ${file} ${file}.debug
    COMMAND ${objcopy} --strip-all --add-gnu-debuglink=${file}.debug ${file}
    BYPRODUCTS ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${file}.debug
    VERBATIM)
endif()
