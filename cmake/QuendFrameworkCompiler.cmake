# What the library needs to know of a compiler. Its own build asks, and so does the package, of the
# compiler of its user.

# Asks the compiler what it defines, and sets three variables of the caller:
#   refusal      why the library is not for this compiler; empty if it is
#   c_runtime    msvcrt or ucrt
#   cxx_runtime  release and date of the compiler's libstdc++, which compare as a version
function(quend_framework_ask_compiler refusal c_runtime cxx_runtime)
  separate_arguments(flags NATIVE_COMMAND "${CMAKE_CXX_COMPILER_ARG1} ${CMAKE_CXX_FLAGS}")
  if(CMAKE_CXX_COMPILER_TARGET)  # clang, which compiles for several systems
    list(APPEND flags --target=${CMAKE_CXX_COMPILER_TARGET})
  endif()
  set(macros "")
  if(CMAKE_CXX_COMPILER)
    execute_process(OUTPUT_VARIABLE macros ERROR_QUIET COMMAND ${CMAKE_CXX_COMPILER} ${flags}
      -E -dM -x c++ ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/QuendFrameworkCompiler.h)
  endif()

  set(why "")
  if(NOT CMAKE_CXX_COMPILER)
    set(why "Quend Framework needs CXX among the languages of the project.")
  elseif(NOT macros MATCHES "#define __MINGW32__ ")
    set(why "Quend Framework is for Windows, and this compiler makes programs for another system.")
  elseif(NOT macros MATCHES "#define __x86_64__ ")
    set(why "Quend Framework is for x86-64, and this compiler makes programs for 32 bits or for ARM.")
  elseif(macros MATCHES "#define __clang_major__ ([0-9]+)" AND CMAKE_MATCH_1 LESS 19)
    set(why "Quend Framework was tried with clang 19 and later, and this clang is older.")
  elseif(NOT macros MATCHES "#define __GLIBCXX__ ")
    set(why "Quend Framework needs GCC's libstdc++, and this compiler uses another C++ library.")
  elseif(NOT macros MATCHES "#define _GLIBCXX_GCC_GTHR_POSIX_H")
    set(why "Quend Framework needs posix threads, and this compiler has win32 or mcf threads.")
  endif()
  set(${refusal} "${why}" PARENT_SCOPE)

  if(macros MATCHES "#define _UCRT")
    set(${c_runtime} ucrt PARENT_SCOPE)
  else()
    set(${c_runtime} msvcrt PARENT_SCOPE)
  endif()
  string(REGEX MATCH "#define _GLIBCXX_RELEASE ([0-9]+)" match "${macros}")
  set(release ${CMAKE_MATCH_1})
  string(REGEX MATCH "#define __GLIBCXX__ ([0-9]+)" match "${macros}")
  set(${cxx_runtime} ${release}.${CMAKE_MATCH_1} PARENT_SCOPE)
endfunction()

# Sets `dlls` to the three DLLs of GCC's runtime as the compiler has them: among the libraries of a
# cross compiler, beside a compiler on Windows. Empty if one of them is not found.
function(quend_framework_find_runtime dlls)
  get_filename_component(compiler_folder ${CMAKE_CXX_COMPILER} DIRECTORY)
  set(found "")
  foreach(name libstdc++-6 libgcc_s_seh-1 libwinpthread-1)
    find_file(file_${name} ${name}.dll NO_CACHE NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH
      PATHS ${CMAKE_CXX_IMPLICIT_LINK_DIRECTORIES} ${compiler_folder})
    list(APPEND found ${file_${name}})
  endforeach()
  if("${found}" MATCHES "NOTFOUND")
    set(found "")
  endif()
  set(${dlls} ${found} PARENT_SCOPE)
endfunction()
