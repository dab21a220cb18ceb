# The portable sources built for this machine, for the sanitizers, libFuzzer, gcov and callgrind,
# which the product's toolchain lacks. Not a product.
option(QUEND_FRAMEWORK_FUZZ "Build the fuzz targets in place of the tests" OFF)
option(QUEND_FRAMEWORK_FIND_LEAKS "The compiler's flags bring LeakSanitizer" OFF)
include(${CMAKE_CURRENT_LIST_DIR}/Sources.cmake)
add_library(QuendFrameworkPortable STATIC ${portable_sources})
target_compile_features(QuendFrameworkPortable PUBLIC cxx_std_20)
target_compile_definitions(QuendFrameworkPortable PUBLIC QUEND_FRAMEWORK_STATIC)
target_compile_options(QuendFrameworkPortable PUBLIC -include windows.h -Wall -Wextra)
if(QUEND_FRAMEWORK_FIND_LEAKS)
  target_compile_definitions(QuendFrameworkPortable PUBLIC QUEND_FIND_LEAKS)
endif()
# native/windows.h has the names of Windows that the sources use.
target_include_directories(QuendFrameworkPortable PUBLIC ${CMAKE_CURRENT_LIST_DIR}/native
  ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/tests)
