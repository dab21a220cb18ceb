# `cmake --install BUILD --prefix P` gives a complete package, which find_package(QuendFramework)
# finds below P and which may be moved; `cpack` makes a zip of the same.
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/QuendFramework)
install(TARGETS QuendFramework EXPORT QuendFramework FILE_SET HEADERS)
install(EXPORT QuendFramework FILE QuendFrameworkConfig.cmake NAMESPACE Quend::
  DESTINATION ${package_dir})
# A client runs with the release that it was linked with: the version is part of the DLL's name.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/QuendFrameworkConfigVersion.cmake
  COMPATIBILITY ExactVersion)
install(FILES ${PROJECT_BINARY_DIR}/QuendFrameworkConfigVersion.cmake DESTINATION ${package_dir})
install(FILES README.md CHANGELOG.md LICENSE docs/binary-interface.md TYPE DOC)

if(MINGW)
  configure_file(cmake/quend-framework.pc.in quend-framework.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/quend-framework.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
  install(FILES ${exports} ${import_library} DESTINATION ${CMAKE_INSTALL_LIBDIR})
  install(FILES ${runtime_libraries} DESTINATION ${CMAKE_INSTALL_BINDIR})
  # The licence notes of GCC's runtime, which is bundled: ours, and the toolchain's own texts.
  install(FILES docs/runtime-licences.md TYPE DOC)
  foreach(package gcc-mingw-w64-x86-64-posix-runtime mingw-w64-x86-64-dev)
    install(FILES /usr/share/doc/${package}/copyright OPTIONAL
      DESTINATION ${CMAKE_INSTALL_DOCDIR} RENAME ${package}.copyright)
  endforeach()
endif()

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_FILE_NAME Quend_Framework-${PROJECT_VERSION}-win64)
set(CPACK_PACKAGE_CHECKSUM SHA256)
include(CPack)
