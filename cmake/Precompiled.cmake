# What nearly every file includes is compiled once for all: JUCE's headers alone take longer than most files do. Each file still
# includes what it uses.
set(precompiled_headers <algorithm> <array> <atomic> <chrono> <condition_variable> <cstdint> <cstring> <deque> <filesystem>
    <fstream> <functional> <map> <memory> <mutex> <optional> <set> <span> <sstream> <string> <thread> <utility> <variant> <vector>
    <juce_events/juce_events.h>)
file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/precompiled.cpp CONTENT "")
add_library(precompiled OBJECT ${CMAKE_BINARY_DIR}/precompiled.cpp)
target_link_libraries(precompiled PRIVATE juce headunit_warnings)
target_precompile_headers(precompiled PRIVATE ${precompiled_headers})

# headunit_precompile(TARGET ...): compiles them with those headers.
function(headunit_precompile)
    foreach(target IN LISTS ARGN)
        target_precompile_headers(${target} REUSE_FROM precompiled)
    endforeach()
endfunction()
