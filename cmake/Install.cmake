# `cmake --install BUILD --prefix P` gives a complete package, which find_package(QuendFramework)
# finds below P and which may be moved; `cpack` makes a zip of the same, and a second one of the
# debug information.
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME package)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/QuendFramework)
install(TARGETS QuendFramework EXPORT QuendFramework FILE_SET HEADERS)
install(EXPORT QuendFramework FILE QuendFrameworkTargets.cmake NAMESPACE Quend::
  DESTINATION ${package_dir})
configure_file(cmake/QuendFrameworkConfigVersion.cmake.in QuendFrameworkConfigVersion.cmake @ONLY)
set(package_name Quend_Framework-${PROJECT_VERSION}-win64)
if(MINGW)
  string(APPEND package_name -mingw-${c_runtime})
  list(TRANSFORM runtime_libraries REPLACE ".*/" "" OUTPUT_VARIABLE runtime_names)
  configure_package_config_file(cmake/QuendFrameworkConfig.cmake.in QuendFrameworkConfig.cmake
    INSTALL_DESTINATION ${package_dir} NO_CHECK_REQUIRED_COMPONENTS_MACRO)
  install(FILES cmake/QuendFrameworkCompiler.cmake cmake/QuendFrameworkCompiler.h
    DESTINATION ${package_dir})
else()
  file(WRITE ${PROJECT_BINARY_DIR}/QuendFrameworkConfig.cmake
    "include(\${CMAKE_CURRENT_LIST_DIR}/QuendFrameworkTargets.cmake)\n")
endif()
install(FILES ${PROJECT_BINARY_DIR}/QuendFrameworkConfig.cmake
  ${PROJECT_BINARY_DIR}/QuendFrameworkConfigVersion.cmake DESTINATION ${package_dir})

# What a reader needs first is at the root; links between the pages work as in the repository. Pages
# for those who work on the library stay there.
install(FILES README.md CHANGELOG.md LICENSE DESTINATION .)
install(DIRECTORY docs DESTINATION . FILES_MATCHING PATTERN *.md PATTERN internals EXCLUDE)
install(FILES examples/CMakeLists.txt DESTINATION examples)
install(DIRECTORY examples/quick-start examples/first-module examples/modules
  DESTINATION examples)

if(MINGW)
  configure_file(cmake/quend-framework.pc.in quend-framework.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/quend-framework.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
  install(FILES ${exports} ${import_library} DESTINATION ${CMAKE_INSTALL_LIBDIR})

  # GCC's runtime, without the debug information that makes up six sevenths of it.
  foreach(file name IN ZIP_LISTS runtime_libraries runtime_names)
    set(stripped ${PROJECT_BINARY_DIR}/runtime/${name})
    if(${file} IS_NEWER_THAN ${stripped})
      file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/runtime)
      execute_process(COMMAND ${CMAKE_OBJCOPY} --strip-all ${file} ${stripped}
        COMMAND_ERROR_IS_FATAL ANY)
    endif()
    install(FILES ${stripped} DESTINATION ${CMAKE_INSTALL_BINDIR})
  endforeach()
  # Its licence texts, where the toolchain's packages carry them, and the list of all DLLs.
  foreach(package gcc-mingw-w64-x86-64-posix-runtime mingw-w64-x86-64-dev)
    install(FILES /usr/share/doc/${package}/copyright OPTIONAL
      DESTINATION docs RENAME ${package}.copyright)
  endforeach()
  string(TIMESTAMP created UTC)
  configure_file(cmake/package.spdx.in Quend_Framework-${PROJECT_VERSION}.spdx @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/Quend_Framework-${PROJECT_VERSION}.spdx DESTINATION .)

  install(FILES $<TARGET_FILE:QuendFramework>.debug DESTINATION ${CMAKE_INSTALL_BINDIR}
    COMPONENT debug CONFIGURATIONS Release)
endif()

# Last, the checksums of all that was installed: `sha256sum -c SHA256SUMS`.
install(CODE [[
  set(root $ENV{DESTDIR}${CMAKE_INSTALL_PREFIX})
  set(sums "")
  foreach(file IN LISTS CMAKE_INSTALL_MANIFEST_FILES)
    file(SHA256 $ENV{DESTDIR}${file} sum)
    file(RELATIVE_PATH name ${CMAKE_INSTALL_PREFIX} ${file})
    string(APPEND sums "${sum}  ${name}\n")
  endforeach()
  file(WRITE ${root}/SHA256SUMS "${sums}")]])

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
include(CPack)
