# `cmake --install BUILD --prefix P` gives a complete package, which find_package(QuendFramework)
# finds below P and which may be moved.
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME package)
set(package_name Quend_Framework-${PROJECT_VERSION}-win64)
if(MINGW)
  string(APPEND package_name -mingw-${c_runtime})
endif()

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/QuendFramework)
install(TARGETS QuendFramework EXPORT QuendFramework FILE_SET HEADERS)
install(EXPORT QuendFramework FILE QuendFrameworkTargets.cmake NAMESPACE Quend::
  DESTINATION ${package_dir})
configure_file(cmake/QuendFrameworkConfigVersion.cmake.in QuendFrameworkConfigVersion.cmake @ONLY)
if(MINGW)
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
  install(FILES $<TARGET_FILE:QuendFramework>.debug DESTINATION ${CMAKE_INSTALL_BINDIR}
    COMPONENT debug CONFIGURATIONS Release)
  include(cmake/BundledRuntime.cmake)
endif()
include(cmake/Contents.cmake)  # last: it counts what was installed
include(cmake/Pack.cmake)
