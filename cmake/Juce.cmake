# JUCE as one static library, built from the module sources that Debian ships. Debian's own JUCEConfig.cmake does not
# link, as it strips the bundled image and zip code without adding the system's.
find_package(PkgConfig REQUIRED)
find_package(Freetype REQUIRED)
find_package(PNG REQUIRED)
find_package(JPEG REQUIRED)
find_package(ZLIB REQUIRED)
find_package(ALSA REQUIRED)
find_package(Threads REQUIRED)

set(JUCE_MODULES_DIR /usr/share/juce/modules CACHE PATH "where the JUCE module sources are")
set(juce_modules juce_core juce_events juce_data_structures juce_graphics juce_gui_basics juce_audio_basics
    juce_audio_devices juce_audio_formats)

add_library(juce STATIC)
foreach(module IN LISTS juce_modules)
    target_sources(juce PRIVATE ${JUCE_MODULES_DIR}/${module}/${module}.cpp)
    target_compile_definitions(juce PUBLIC JUCE_MODULE_AVAILABLE_${module}=1)
endforeach()
target_include_directories(juce SYSTEM PUBLIC ${JUCE_MODULES_DIR})
target_include_directories(juce SYSTEM PRIVATE ${FREETYPE_INCLUDE_DIRS})
target_compile_definitions(juce PUBLIC
    JUCE_GLOBAL_MODULE_SETTINGS_INCLUDED=1 JUCE_STANDALONE_APPLICATION=1 JUCE_USE_CURL=0 JUCE_WEB_BROWSER=0
    JUCE_INCLUDE_ZLIB_CODE=0 JUCE_INCLUDE_PNGLIB_CODE=0 JUCE_INCLUDE_JPEGLIB_CODE=0 JUCE_MODAL_LOOPS_PERMITTED=1
    JUCE_USE_FLAC=0 JUCE_USE_OGGVORBIS=0 JUCE_JACK=0 JUCE_DISPLAY_SPLASH_SCREEN=0 JUCE_REPORT_APP_USAGE=0
    DONT_SET_USING_JUCE_NAMESPACE=1 $<IF:$<CONFIG:Debug>,DEBUG=1;_DEBUG=1,NDEBUG=1;_NDEBUG=1>)
target_compile_options(juce PRIVATE -w -g1 -ffunction-sections -fdata-sections)
target_link_libraries(juce PUBLIC Freetype::Freetype PNG::PNG JPEG::JPEG ZLIB::ZLIB ALSA::ALSA Threads::Threads dl rt)
target_link_options(juce INTERFACE -Wl,--gc-sections)
