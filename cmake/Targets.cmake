# The library, twice from the same sources: the DLL, and a static one that is never installed, for
# what looks inside: white-box tests, benchmarks, programs that use the inner facilities. It is built
# for those who link with it.

if(NOT MSVC)
  include(cmake/QuendFrameworkCompiler.cmake)
  quend_framework_ask_compiler(refusal c_runtime cxx_runtime)
  if(refusal)
    message(FATAL_ERROR "${refusal}")
  endif()
endif()

set(headers
  include/Quend/Framework/Exceptions.h
  include/Quend/Framework/Export.h
  include/Quend/Framework/Framework.h
  include/Quend/Framework/MemoryManager.h
  include/Quend/Framework/ObjectReference.h
  include/Quend/Framework/PropertyManager.h
  include/Quend/Framework/ReadPropertyOr.h)
list(TRANSFORM headers PREPEND ${PROJECT_SOURCE_DIR}/)
include(cmake/Sources.cmake)

# How everything of ours is compiled. PRIVATE: no flag of this reaches a consumer.
add_library(QuendBuildSettings INTERFACE)
target_compile_definitions(QuendBuildSettings INTERFACE NOMINMAX WIN32_LEAN_AND_MEAN)
if(MSVC)
  if(DEFINED CMAKE_MSVC_RUNTIME_LIBRARY AND NOT CMAKE_MSVC_RUNTIME_LIBRARY MATCHES "DLL$"
      OR CMAKE_CXX_FLAGS MATCHES "(^| )[/-]MTd?( |$)")
    message(FATAL_ERROR "The library needs the C runtime as a DLL (/MD or /MDd): it shares its heap "
      "with its clients, and turns thread notifications off, which the static runtime (/MT) relies on.")
  endif()
  target_compile_options(QuendBuildSettings INTERFACE /W4 /permissive- /utf-8)
else()
  target_compile_options(QuendBuildSettings INTERFACE $<$<COMPILE_LANGUAGE:CXX>:
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wold-style-cast
    -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wcast-function-type
    -Wnull-dereference -Wextra-semi -Wsuggest-override -Wformat=2>
    # A search is a few short loops. It takes up to half as long again where they cross a cache line,
    # which must not depend on what the linker puts before them.
    $<$<COMPILE_LANGUAGE:CXX>:-falign-functions=64 -falign-loops=32>
    $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wduplicated-cond -Wlogical-op -Wuseless-cast>
    # GCC wants the virtual destructor that clang 22 finds needless in a final class.
    $<$<COMPILE_LANG_AND_ID:CXX,Clang>:-Wno-unknown-warning-option
    -Wno-unnecessary-virtual-specifier>)
endif()

function(quend_add_library target type)
  add_library(${target} ${type} ${windows_sources} ${portable_sources})
  target_sources(${target} PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR}/include
    FILES ${headers})
  target_compile_features(${target} PUBLIC cxx_std_14 PRIVATE cxx_std_20)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:QuendBuildSettings> shlwapi)
endfunction()

quend_add_library(QuendFramework SHARED)
add_library(Quend::Framework ALIAS QuendFramework)
set_target_properties(QuendFramework PROPERTIES
  EXPORT_NAME Framework
  OUTPUT_NAME Quend_Framework_${PROJECT_VERSION}
  VERIFY_INTERFACE_HEADER_SETS ON)
target_compile_definitions(QuendFramework PRIVATE QUEND_FRAMEWORK_BUILDING)
configure_file(${PROJECT_SOURCE_DIR}/src/core/Version.rc.in Version.rc @ONLY)
target_sources(QuendFramework PRIVATE ${PROJECT_BINARY_DIR}/Version.rc)
if(MINGW)
  # The name of the DLL stands in the file, so that an import library made of it has the name.
  set(exports ${PROJECT_BINARY_DIR}/Quend_Framework_${PROJECT_VERSION}.def)
  configure_file(${PROJECT_SOURCE_DIR}/src/Exports.def ${exports} @ONLY)
  target_sources(QuendFramework PRIVATE ${exports})
  # MSVC's linker and lld-link cannot use GCC's import library; LLVM makes one for them.
  file(STRINGS ${PROJECT_SOURCE_DIR}/cmake/llvm-version llvm)
  find_program(LLVM_DLLTOOL NO_CACHE NAMES llvm-dlltool-${llvm} llvm-dlltool)
  if(LLVM_DLLTOOL)
    set(import_library ${PROJECT_BINARY_DIR}/Quend_Framework_${PROJECT_VERSION}.lib)
    execute_process(COMMAND ${LLVM_DLLTOOL} -m i386:x86-64 -d ${exports} -l ${import_library}
      COMMAND_ERROR_IS_FATAL ANY)
  else()
    message(STATUS "No llvm-dlltool: the package will lack the import library for MSVC's linker.")
  endif()
  # GCC's runtime is shared with all modules of the process: beside the programs, in the package.
  quend_framework_find_runtime(runtime_libraries)
  if(NOT runtime_libraries)
    message(FATAL_ERROR "This compiler has no libstdc++-6.dll, libgcc_s_seh-1.dll and "
      "libwinpthread-1.dll, which Quend Framework shares with its clients.")
  endif()
  if(PROJECT_IS_TOP_LEVEL)
    file(COPY ${runtime_libraries} DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
  endif()
  # Byte-equal whatever folder it is built in: no time stamp, and no image base that the
  # linker would derive from the output path.
  target_link_options(QuendFramework PRIVATE
    LINKER:--no-insert-timestamp LINKER:--disable-auto-image-base LINKER:--no-undefined)
endif()

quend_add_library(QuendFrameworkStatic STATIC)
set_target_properties(QuendFrameworkStatic PROPERTIES EXCLUDE_FROM_ALL ON)
target_compile_definitions(QuendFrameworkStatic PUBLIC QUEND_FRAMEWORK_STATIC)
target_include_directories(QuendFrameworkStatic INTERFACE ${PROJECT_SOURCE_DIR}/src)
target_compile_features(QuendFrameworkStatic INTERFACE cxx_std_20)
