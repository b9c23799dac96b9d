# Our own code is compiled with warnings as errors; system headers and JUCE are not. GCC 12 sees strings overflow that come from
# precompiled headers; clang keeps those warnings.
add_library(headunit_warnings INTERFACE)
target_compile_options(headunit_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual -Wcast-align -Wunused
    -Wconversion -Wno-sign-conversion
    "$<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds;-Wno-stringop-overflow>" -Werror)

# headunit_library(NAME [OBJECT] [FOLDERS folder ...] [SOURCES file ...] LINK target ...): a library of every source in the
# folders, which are relative to src/, and of these files. Headers are included as "layer/Header.h". A new file needs no entry.
function(headunit_library name)
    cmake_parse_arguments(arg "OBJECT" "" "FOLDERS;SOURCES;LINK" ${ARGN})
    set(sources ${arg_SOURCES})
    foreach(folder IN LISTS arg_FOLDERS)
        file(GLOB found CONFIGURE_DEPENDS ${folder}/*.cpp)
        list(APPEND sources ${found})
    endforeach()
    if(arg_OBJECT)
        add_library(${name} OBJECT ${sources})
    else()
        add_library(${name} STATIC ${sources})
    endif()
    target_include_directories(${name} PUBLIC ${CMAKE_SOURCE_DIR}/src)
    target_link_libraries(${name} PUBLIC ${arg_LINK} PRIVATE headunit_warnings)
    headunit_precompile(${name})
endfunction()
