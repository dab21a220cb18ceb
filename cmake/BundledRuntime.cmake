# GCC's runtime in the package, without the debug information that makes up six sevenths of it, and
# without a time stamp, which objcopy takes from SOURCE_DATE_EPOCH.

file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/runtime)
foreach(file name IN ZIP_LISTS runtime_libraries runtime_names)
  set(stripped ${PROJECT_BINARY_DIR}/runtime/${name})
  execute_process(COMMAND ${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=0
    ${CMAKE_OBJCOPY} --strip-all ${file} ${stripped} COMMAND_ERROR_IS_FATAL ANY)
  install(FILES ${stripped} DESTINATION ${CMAKE_INSTALL_BINDIR})

  # For the SPDX document: who delivers the DLL, in which version. Debian's packages know, and have
  # its licence texts.
  set(supplier_${name} MinGW-w64)
  set(version_${name} ${CMAKE_CXX_COMPILER_VERSION})
  file(REAL_PATH ${file} file)
  execute_process(COMMAND dpkg-query --search ${file} OUTPUT_VARIABLE owner ERROR_QUIET)
  if(owner)
    string(REGEX REPLACE ":.*" "" owner ${owner})
    cmake_host_system_information(RESULT supplier_${name} QUERY DISTRIB_NAME)
    execute_process(COMMAND dpkg-query --show --showformat=\${Version} ${owner}
      OUTPUT_VARIABLE version_${name} COMMAND_ERROR_IS_FATAL ANY)
    install(FILES /usr/share/doc/${owner}/copyright DESTINATION docs RENAME ${owner}.copyright)
  endif()
endforeach()
