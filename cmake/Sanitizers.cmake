# HEADUNIT_SANITIZE is empty, "address" (address and undefined behaviour) or "thread". Only "thread" covers JUCE too: it
# must see every synchronisation in the process, while the others find the faults of our own code without it and build
# several times as fast. The "address" build also counts the lines that its tests reach.
set(HEADUNIT_SANITIZE "" CACHE STRING "address, thread or empty")
if(HEADUNIT_SANITIZE STREQUAL "address")
    add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined
        --coverage -fprofile-update=atomic)
    add_link_options(-fsanitize=address,undefined --coverage)
    add_compile_definitions(HEADUNIT_SANITIZED=1)
elseif(HEADUNIT_SANITIZE STREQUAL "thread")
    add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
    add_link_options(-fsanitize=thread)
    add_compile_definitions(HEADUNIT_SANITIZED=1)
elseif(HEADUNIT_SANITIZE)
    message(FATAL_ERROR "HEADUNIT_SANITIZE is '${HEADUNIT_SANITIZE}': address, thread or empty")
endif()
