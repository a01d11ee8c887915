# What every target of the project has in common, and how the sources of a layer are found.

add_library(quoril_options INTERFACE)
target_include_directories(quoril_options INTERFACE ${PROJECT_SOURCE_DIR}/src ${PROJECT_BINARY_DIR}/generated)
target_compile_definitions(quoril_options INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_CAST_FROM_BYTEARRAY
  QT_NO_URL_CAST_FROM_STRING QT_NO_KEYWORDS QT_NO_NARROWING_CONVERSIONS_IN_CONNECT)
if(MSVC)
  target_compile_options(quoril_options INTERFACE /W4 /WX /permissive- /utf-8)
else()
  target_compile_options(quoril_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wnon-virtual-dtor
    -Woverloaded-virtual -Wold-style-cast -Werror)
endif()
if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # The class of a source that holds a member of a type of the same source is no class of a header.
  target_compile_options(quoril_options INTERFACE -Wno-subobject-linkage)
endif()
if(QUORIL_SANITIZE)
  target_compile_options(quoril_options INTERFACE -fsanitize=${QUORIL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(quoril_options INTERFACE -fsanitize=${QUORIL_SANITIZE})
endif()

# A file whose name ends in one of these words belongs to the gui layer, whatever its folder, and so does its test.
set(QUORIL_GUI_WORDS "dialog|dialogs|view|frame|widget|painter|model|commands|manager_app")
set(QUORIL_GUI_FILE "_(${QUORIL_GUI_WORDS})\\.(cpp|h)$")

# quoril_sources(OUT CORE|GUI|ALL folder...): the sources of the folders (not of their subfolders).
function(quoril_sources out kind)
  set(found)
  foreach(folder IN LISTS ARGN)
    file(GLOB files CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/*.h)
    list(APPEND found ${files})
  endforeach()
  if(kind STREQUAL "CORE")
    list(FILTER found EXCLUDE REGEX "${QUORIL_GUI_FILE}")
  elseif(kind STREQUAL "GUI")
    list(FILTER found INCLUDE REGEX "${QUORIL_GUI_FILE}")
  endif()
  set(${out} ${found} PARENT_SCOPE)
endfunction()

# Presets whose object files nobody builds twice put several sources of a layer into one, which saves two thirds of
# the time. Dialogs stay apart: each has a short name of its own for the numbers of its controls.
function(quoril_unity sources)
  set(apart ${sources})
  list(FILTER apart INCLUDE REGEX "_dialogs?\\.cpp$")
  set_source_files_properties(${apart} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()

# quoril_layer(name SOURCES ... LINK ...): one static library of the layers formats, platform, core, gui.
function(quoril_layer name)
  cmake_parse_arguments(LAYER "" "" "SOURCES;LINK" ${ARGN})
  if(NOT LAYER_SOURCES)
    add_library(${name} INTERFACE)
    target_link_libraries(${name} INTERFACE ${LAYER_LINK} quoril_options)
    return()
  endif()
  add_library(${name} STATIC ${LAYER_SOURCES})
  set_target_properties(${name} PROPERTIES AUTOMOC ON LINKER_LANGUAGE CXX)
  target_link_libraries(${name} PUBLIC ${LAYER_LINK} quoril_options)
  quoril_unity("${LAYER_SOURCES}")
  # Each header compiles alone: the target all_verify_interface_header_sets.
  set(headers ${LAYER_SOURCES})
  list(FILTER headers INCLUDE REGEX "\\.h$")
  target_sources(${name} PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR}/src FILES ${headers})
  set_target_properties(${name} PROPERTIES VERIFY_INTERFACE_HEADER_SETS ON)
endfunction()

# quoril_program(name DESCRIPTION text [GUI]): gives a program of Windows its version block, icon, manifest and safe start, and
# a program with windows (GUI) no console, and makes it part of the release. Elsewhere there is nothing to give.
function(quoril_program name)
  cmake_parse_arguments(PROGRAM "GUI" "DESCRIPTION" "" ${ARGN})
  if(NOT WIN32)
    return()
  endif()
  if(NOT TARGET quoril_release)
    add_custom_target(quoril_release DEPENDS quoril_german quoril_help)
  endif()
  add_dependencies(quoril_release ${name})
  set(QUORIL_PROGRAM ${name})
  set(QUORIL_DESCRIPTION ${PROGRAM_DESCRIPTION})
  set(QUORIL_ICON ${PROJECT_SOURCE_DIR}/src/resources/icons/application.ico)
  set(QUORIL_MANIFEST ${PROJECT_SOURCE_DIR}/cmake/windows/program.manifest)
  set(resource ${CMAKE_CURRENT_BINARY_DIR}/${name}.rc)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/windows/program.rc.in ${resource} @ONLY)
  target_sources(${name} PRIVATE ${resource} ${PROJECT_SOURCE_DIR}/src/apps/program_start_windows.cpp)
  set_source_files_properties(${resource} PROPERTIES OBJECT_DEPENDS "${QUORIL_ICON};${QUORIL_MANIFEST}")
  set_target_properties(${name} PROPERTIES WIN32_EXECUTABLE ${PROGRAM_GUI})
  if(MSVC)
    # The resource holds the manifest; the linker would add one of its own. DLLs are looked for in the system's folder.
    target_link_options(${name} PRIVATE /MANIFEST:NO /DEPENDENTLOADFLAG:0x800)
  else()
    target_link_options(${name} PRIVATE -Wl,--tsaware)
  endif()
endfunction()
