# Compiles go through ccache when it is there. Paths are taken relative to the checkout, so that several checkouts share
# one cache, and __DATE__ and friends do not spoil it.
find_program(CCACHE ccache)
if(CCACHE)
    set(launcher ${CMAKE_COMMAND} -E env
        CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1 CCACHE_SLOPPINESS=time_macros,pch_defines ${CCACHE})
    set(CMAKE_C_COMPILER_LAUNCHER ${launcher})
    set(CMAKE_CXX_COMPILER_LAUNCHER ${launcher})
endif()
