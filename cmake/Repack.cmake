# Run by CPack when it has made the zips.
separate_arguments(time UNIX_COMMAND "${CPACK_QUEND_TIME}")
foreach(file IN LISTS CPACK_PACKAGE_FILES)
  execute_process(COMMAND ${CPACK_QUEND_PYTHON} ${CMAKE_CURRENT_LIST_DIR}/repack.py ${file} ${time}
    COMMAND_ERROR_IS_FATAL ANY)
endforeach()
