# What compiles on Windows only, and what the native builds compile as well.
set(windows_sources
  command/CommandRunner.cpp
  core/EntryPoint.cpp
  Quend/RegistryAccess/Registry.cpp
  Quend/RegistryAccess/RegistryErrors.cpp)
set(portable_sources
  core/MemoryManager.cpp
  core/ObjectRegistry.cpp
  core/RandomSource.cpp
  core/StaticInitialisation.cpp
  logging/DebugString.cpp
  logging/LogChannel.cpp
  logging/LogManager.cpp
  logging/LogMessage.cpp
  logging/MessageCache.cpp
  logging/MessageText.cpp
  logging/PluginLibrary.cpp
  properties/PropertyManagerImpl.cpp
  properties/TextConversion.cpp)
list(TRANSFORM windows_sources PREPEND ${PROJECT_SOURCE_DIR}/src/)
list(TRANSFORM portable_sources PREPEND ${PROJECT_SOURCE_DIR}/src/)

# The same of the tests that look inside.
set(windows_tests
  CommandRunnerTest.cpp
  LoggingModuleTest.cpp
  RegistryTest.cpp)
set(portable_tests
  LoggingTest.cpp
  MessageTextTest.cpp
  ObjectRegistryTest.cpp
  PairsOfCallsTest.cpp
  PropertyManagerTest.cpp
  RandomSourceTest.cpp
  TextConversionTest.cpp)
list(TRANSFORM windows_tests PREPEND ${PROJECT_SOURCE_DIR}/tests/)
list(TRANSFORM portable_tests PREPEND ${PROJECT_SOURCE_DIR}/tests/)
