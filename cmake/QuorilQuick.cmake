# What shortens the wait after a small change, as far as it is installed: a compiler cache and a fast linker.
find_program(QUORIL_CCACHE ccache)
if(QUORIL_CCACHE)
  # What the cache has to overlook to serve precompiled headers.
  set(CMAKE_CXX_COMPILER_LAUNCHER
    ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros ${QUORIL_CCACHE})
endif()
find_program(QUORIL_LINKER NAMES mold ld.lld)
if(QUORIL_LINKER)
  cmake_path(GET QUORIL_LINKER FILENAME linker)
  string(REPLACE "ld.lld" "lld" linker ${linker})
  add_link_options(-fuse-ld=${linker})
endif()
