# The compiler for type libraries comes with MinGW-w64; the automation library that every type library
# stands on comes with Wine.
set(FLIGLAF_WINE_ROOT "" CACHE PATH "Root of a system with 32-bit Wine; empty: this system")
find_program(WIDL i686-w64-mingw32-widl REQUIRED)
find_path(WINE_IDL_FOLDER oaidl.idl REQUIRED NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH
  PATHS ${FLIGLAF_WINE_ROOT}/usr/include/wine/wine/windows ${FLIGLAF_WINE_ROOT}/usr/include/wine/windows)
find_path(WINE_TYPE_LIBRARY_FOLDER stdole2.tlb REQUIRED NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH
  PATHS ${FLIGLAF_WINE_ROOT}/usr/lib/i386-linux-gnu/wine/i386-windows
        ${FLIGLAF_WINE_ROOT}/usr/lib/wine/i386-windows)

set(FLIGLAF_GENERATED ${PROJECT_BINARY_DIR}/generated)
file(MAKE_DIRECTORY ${FLIGLAF_GENERATED})

# add_type_library(TARGET IDL): compiles IDL into NAME.tlb and NAME_type_library.h in
# FLIGLAF_GENERATED, NAME being that of the IDL file.
function(add_type_library target idl)
  cmake_path(GET idl STEM name)
  set(library ${FLIGLAF_GENERATED}/${name}.tlb)
  set(header ${FLIGLAF_GENERATED}/${name}_type_library.h)
  set(widl ${WIDL} -I ${WINE_IDL_FOLDER} -L ${WINE_TYPE_LIBRARY_FOLDER}
    -DFLIGLAF_TYPELIB_VERSION=${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
  add_custom_command(
    OUTPUT ${library} ${header}
    COMMAND ${widl} -t -o ${library} ${idl}
    COMMAND ${widl} -h -o ${header} ${idl}
    DEPENDS ${idl}
    COMMENT "Compiling the type library ${name}"
    VERBATIM)
  add_custom_target(${target} DEPENDS ${library} ${header})
endfunction()

set(FLIGLAF_TYPE_LIBRARY ${FLIGLAF_GENERATED}/fliglaf.tlb)
add_type_library(type_library ${PROJECT_SOURCE_DIR}/host/com/fliglaf.idl)
