# HEADUNIT_SANITIZE is empty, "address" (address and undefined behaviour; counts the lines that the tests reach, too), "thread",
# or "fuzzer" (clang's, with address). What is defined after this file is built with it. JUCE is defined before: only "thread"
# covers it, which must see every synchronisation in the process; the others find the faults of our own code without it.
set(HEADUNIT_SANITIZE "" CACHE STRING "address, thread, fuzzer or empty")
if(HEADUNIT_SANITIZE)
    if(HEADUNIT_SANITIZE STREQUAL "address")
        # Several threads count. The option itself would keep ccache away.
        set(sanitizer -fsanitize=address,undefined -fno-sanitize-recover=undefined --coverage
                      -specs=${CMAKE_SOURCE_DIR}/cmake/atomic-counters.specs)
    elseif(HEADUNIT_SANITIZE STREQUAL "thread")
        set(sanitizer -fsanitize=thread)
        target_compile_options(juce PRIVATE -O1 ${sanitizer} -fno-omit-frame-pointer)
    elseif(HEADUNIT_SANITIZE STREQUAL "fuzzer")
        set(sanitizer -fsanitize=fuzzer-no-link,address)
    else()
        message(FATAL_ERROR "HEADUNIT_SANITIZE is '${HEADUNIT_SANITIZE}': address, thread, fuzzer or empty")
    endif()
    add_compile_options(-O1 -g1 ${sanitizer} -fno-omit-frame-pointer -DHEADUNIT_SANITIZED)
    add_link_options(${sanitizer})
endif()
