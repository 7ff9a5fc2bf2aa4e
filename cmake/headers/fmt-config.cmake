if(NOT TARGET fmt::fmt-header-only)
  add_library(fmt::fmt-header-only INTERFACE IMPORTED)
  target_include_directories(fmt::fmt-header-only SYSTEM INTERFACE ${FLIGLAF_HEADERS})
  # Without the thousands separator of the locale, which would bring all locales into the DLL.
  target_compile_definitions(fmt::fmt-header-only INTERFACE
    FMT_HEADER_ONLY=1 FMT_STATIC_THOUSANDS_SEPARATOR=',')
endif()
