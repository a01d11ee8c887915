# The loader looks for a DLL beside the program before it looks in the system's folder, unless the DLL is one of those
# that Windows keeps loaded. The others are loaded at their first use instead, when program_start_windows.cpp has seen to it
# that the system's folder is the only place. The linker finds the libraries made here before the compiler's own.
set(QUORIL_DELAYED authz d3d11 d3d9 dwmapi dwrite dxgi netapi32 shcore userenv uxtheme version winmm winspool wtsapi32)

find_program(QUORIL_DLLTOOL x86_64-w64-mingw32-dlltool REQUIRED)
set(delayed ${PROJECT_BINARY_DIR}/delayed)
file(MAKE_DIRECTORY ${delayed})

# quoril_delayed_library(name): an import library of the same functions whose DLL is loaded late.
function(quoril_delayed_library name)
  set(library ${delayed}/lib${name}.a)
  if(EXISTS ${library})
    return()
  endif()
  find_library(QUORIL_IMPORT_${name} ${name} REQUIRED NO_CACHE)
  execute_process(COMMAND ${QUORIL_DLLTOOL} --identify ${QUORIL_IMPORT_${name}}
    OUTPUT_VARIABLE dll OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND ${CMAKE_NM} --extern-only --defined-only ${QUORIL_IMPORT_${name}}
    OUTPUT_VARIABLE symbols ERROR_QUIET COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "__imp_[A-Za-z0-9_]+" functions "${symbols}")
  list(TRANSFORM functions REPLACE "^__imp_" "")
  list(REMOVE_DUPLICATES functions)
  list(JOIN functions "\n" functions)
  file(WRITE ${delayed}/${name}.def "LIBRARY ${dll}\nEXPORTS\n${functions}\n")
  execute_process(COMMAND ${QUORIL_DLLTOOL} --input-def ${delayed}/${name}.def --output-delaylib ${library}
    COMMAND_ERROR_IS_FATAL ANY)
endfunction()

foreach(name IN LISTS QUORIL_DELAYED)
  quoril_delayed_library(${name})
endforeach()
string(PREPEND CMAKE_EXE_LINKER_FLAGS "-L${delayed} ")
