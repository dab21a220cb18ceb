# `cpack` makes a zip of the package, and a second one of the debug information.
set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_FILE_NAME ${package_name})
set(CPACK_COMPONENTS_ALL package)
if(MINGW)
  list(APPEND CPACK_COMPONENTS_ALL debug)
endif()
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
set(CPACK_COMPONENT_INCLUDE_TOPLEVEL_DIRECTORY ON)
set(CPACK_ARCHIVE_PACKAGE_FILE_NAME ${CPACK_PACKAGE_FILE_NAME})
set(CPACK_ARCHIVE_DEBUG_FILE_NAME ${CPACK_PACKAGE_FILE_NAME}-debug)
set(CPACK_PACKAGE_CHECKSUM SHA256)

# CPack's zips hold the time of each file's last access, and are never the same twice.
find_package(Python3 COMPONENTS Interpreter)
if(Python3_FOUND)
  string(TIMESTAMP CPACK_QUEND_TIME "%Y %m %d %H %M %S" UTC)  # of SOURCE_DATE_EPOCH, if it is set
  set(CPACK_QUEND_PYTHON ${Python3_EXECUTABLE})
  set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/Repack.cmake)
else()
  message(STATUS "No Python: the zips will hold the times of their making.")
endif()
include(CPack)
