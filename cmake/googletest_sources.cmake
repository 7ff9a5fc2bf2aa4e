# GoogleTest for a cross build, from the sources that Debian's package googletest installs.
set(sources /usr/src/googletest)
add_library(googletest_sources STATIC
  ${sources}/googletest/src/gtest-all.cc ${sources}/googletest/src/gtest_main.cc
  ${sources}/googlemock/src/gmock-all.cc)
target_include_directories(googletest_sources SYSTEM
  PUBLIC ${sources}/googletest/include ${sources}/googlemock/include
  PRIVATE ${sources}/googletest ${sources}/googlemock)
target_compile_options(googletest_sources PRIVATE -w)
add_library(GTest::gtest_main ALIAS googletest_sources)
add_library(GTest::gmock ALIAS googletest_sources)
