# Header-only packages for a cross build: the folders of those that the building machine has are
# linked into the build tree, so that nothing else of its include folder gets on the compiler's path.
# The files in headers/ make the usual find_package calls find them.
set(FLIGLAF_HEADERS ${PROJECT_BINARY_DIR}/headers)
file(MAKE_DIRECTORY ${FLIGLAF_HEADERS})
foreach(folder CLI fmt nlohmann toml++)
  if(NOT IS_DIRECTORY /usr/include/${folder})
    message(FATAL_ERROR "/usr/include/${folder} is missing; scripts/windows.sh installs its package")
  endif()
  file(CREATE_LINK /usr/include/${folder} ${FLIGLAF_HEADERS}/${folder} SYMBOLIC)
endforeach()

foreach(package CLI11 fmt nlohmann_json)
  set(${package}_DIR ${CMAKE_CURRENT_LIST_DIR}/headers CACHE PATH "Header-only package" FORCE)
endforeach()
set(TOMLPLUSPLUS_INCLUDE_DIR ${FLIGLAF_HEADERS} CACHE PATH "Header-only package" FORCE)
