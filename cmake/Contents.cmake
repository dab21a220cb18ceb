# What the package says of itself: the list of its DLLs as an SPDX document, and the checksums of all
# files, for `sha256sum -c SHA256SUMS`. Included last, so that all else is installed by then.
if(MINGW)
  set(document Quend_Framework-${PROJECT_VERSION}.spdx)
  set(compiler "${CMAKE_CXX_COMPILER_ID} ${CMAKE_CXX_COMPILER_VERSION}")
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    set(compiler "GCC ${version_libstdc++-6.dll}")  # Debian's says 12.0 of itself
  endif()
  string(TIMESTAMP created UTC)  # that of SOURCE_DATE_EPOCH, if it is set
  set(namespace @namespace@)     # known when the files are
  configure_file(cmake/package.spdx.in ${document} @ONLY)
endif()
install(CODE "
  set(document \"${document}\")
  set(template \"${PROJECT_BINARY_DIR}/${document}\")
  set(created \"${created}\")")
install(CODE [[
  set(root $ENV{DESTDIR}${CMAKE_INSTALL_PREFIX})
  function(add_checksum name)
    file(SHA256 ${root}/${name} sum)
    set(sums "${sums}${sum}  ${name}\n" PARENT_SCOPE)
  endfunction()

  list(SORT CMAKE_INSTALL_MANIFEST_FILES)
  set(sums "")
  foreach(file IN LISTS CMAKE_INSTALL_MANIFEST_FILES)
    file(RELATIVE_PATH name ${CMAKE_INSTALL_PREFIX} ${file})
    add_checksum(${name})
  endforeach()
  if(document)
    # A namespace of its own for each content.
    string(UUID namespace NAMESPACE 6ba7b811-9dad-11d1-80b4-00c04fd430c8 TYPE SHA1
      NAME "${created}\n${sums}")
    configure_file(${template} ${root}/${document} @ONLY)
    add_checksum(${document})
  endif()
  file(WRITE ${root}/SHA256SUMS "${sums}")]])
