# The type library and its C++ header, from host/com/fliglaf.idl. The compiler for it comes with
# MinGW-w64; the automation library that every type library stands on comes with Wine.
set(FLIGLAF_WINE_ROOT "" CACHE PATH "Root of a system with 32-bit Wine; empty: this system")
find_program(WIDL i686-w64-mingw32-widl REQUIRED)
find_path(WINE_IDL_FOLDER oaidl.idl REQUIRED NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH
  PATHS ${FLIGLAF_WINE_ROOT}/usr/include/wine/wine/windows ${FLIGLAF_WINE_ROOT}/usr/include/wine/windows)
find_path(WINE_TYPE_LIBRARY_FOLDER stdole2.tlb REQUIRED NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH
  PATHS ${FLIGLAF_WINE_ROOT}/usr/lib/i386-linux-gnu/wine/i386-windows
        ${FLIGLAF_WINE_ROOT}/usr/lib/wine/i386-windows)

set(FLIGLAF_GENERATED ${PROJECT_BINARY_DIR}/generated)
set(FLIGLAF_TYPE_LIBRARY ${FLIGLAF_GENERATED}/fliglaf.tlb)
file(MAKE_DIRECTORY ${FLIGLAF_GENERATED})
set(idl ${PROJECT_SOURCE_DIR}/host/com/fliglaf.idl)
set(widl ${WIDL} -I ${WINE_IDL_FOLDER} -L ${WINE_TYPE_LIBRARY_FOLDER}
  -DFLIGLAF_TYPELIB_VERSION=${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
add_custom_command(
  OUTPUT ${FLIGLAF_TYPE_LIBRARY} ${FLIGLAF_GENERATED}/fliglaf_type_library.h
  COMMAND ${widl} -t -o ${FLIGLAF_TYPE_LIBRARY} ${idl}
  COMMAND ${widl} -h -o ${FLIGLAF_GENERATED}/fliglaf_type_library.h ${idl}
  DEPENDS ${idl}
  COMMENT "Compiling the type library"
  VERBATIM)
add_custom_target(type_library DEPENDS ${FLIGLAF_TYPE_LIBRARY})
