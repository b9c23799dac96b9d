# The Debian packages: `cpack` in a build folder makes headunit-engine, headunit-bench and headunit-dev. Without a package,
# `cmake --install` puts the same files below the prefix, all of them or one --component.
set(package_files ${CMAKE_SOURCE_DIR}/packaging)
set(units lib/systemd/system)
set(private_lib ${CMAKE_INSTALL_PREFIX}/lib/headunit)

function(install_compressed file folder name component) # as Debian wants changelogs and manual pages
    set(made ${CMAKE_BINARY_DIR}/packages/${component}/${name}.gz)
    add_custom_command(OUTPUT ${made} COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/packages/${component}
        COMMAND gzip -9nc ${file} > ${made} DEPENDS ${file} VERBATIM)
    add_custom_target(compressed_${component}_${name} ALL DEPENDS ${made})
    install(FILES ${made} DESTINATION ${folder} COMPONENT ${component})
endfunction()

# headunit-engine
install(TARGETS headunit-engine headunit-ctl COMPONENT engine)
install(TARGETS headunit-launch RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR} COMPONENT engine)
install(TARGETS VX_Logcat DESTINATION lib/headunit COMPONENT engine)
install(FILES ${package_files}/engine.toml DESTINATION ${CMAKE_INSTALL_FULL_SYSCONFDIR}/headunit COMPONENT engine)
install(FILES ${package_files}/default DESTINATION ${CMAKE_INSTALL_FULL_SYSCONFDIR}/default RENAME headunit COMPONENT engine)
install(DIRECTORY DESTINATION ${CMAKE_INSTALL_FULL_SYSCONFDIR}/headunit/update-keys COMPONENT engine)
install(DIRECTORY ${package_files}/systemd/ DESTINATION ${units} COMPONENT engine)
install(FILES ${package_files}/bus.conf DESTINATION ${CMAKE_INSTALL_DATADIR}/headunit COMPONENT engine)
foreach(kind IN ITEMS sysusers tmpfiles)
    install(FILES ${package_files}/${kind}.conf DESTINATION lib/${kind}.d RENAME headunit.conf COMPONENT engine)
endforeach()
install(FILES ${package_files}/udev.rules DESTINATION lib/udev/rules.d RENAME 60-headunit.rules COMPONENT engine)
install(FILES ${package_files}/headunit-ctl.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME headunit-ctl
    COMPONENT engine)
file(GLOB manual_pages CONFIGURE_DEPENDS ${package_files}/*.[1-8])
foreach(page IN LISTS manual_pages)
    get_filename_component(name ${page} NAME)
    string(REGEX REPLACE ".*\\." "" section ${name})
    set(component engine)
    if(name MATCHES bench)
        set(component bench)
    endif()
    install_compressed(${page} ${CMAKE_INSTALL_MANDIR}/man${section} ${name} ${component})
endforeach()
install(DIRECTORY ${CMAKE_SOURCE_DIR}/docs/ DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/headunit-engine COMPONENT engine
    FILES_MATCHING PATTERN "*.md" PATTERN "*.png" PATTERN "*.svg")

# headunit-bench: laid out as in a build folder, so that it finds what is beside it.
set(bench_folder ${private_lib}/bench)
install(TARGETS headunit-bench headunit-bench-program headunit-simulation headunit-replay headunit-checker DESTINATION lib/headunit/bench/bin
    COMPONENT bench)
install(DIRECTORY ${CMAKE_BINARY_DIR}/resources/bench ${CMAKE_BINARY_DIR}/resources/worlds
    DESTINATION ${CMAKE_INSTALL_DATADIR}/headunit COMPONENT bench)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/tests/scenarios DESTINATION ${CMAKE_INSTALL_DATADIR}/headunit COMPONENT bench
    FILES_MATCHING PATTERN "*.scenario" PATTERN golden EXCLUDE)
install(FILES ${CMAKE_SOURCE_DIR}/bench/README.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/headunit-bench COMPONENT bench)
function(install_link target name)
    get_filename_component(folder ${name} DIRECTORY)
    install(CODE "file(MAKE_DIRECTORY \"\$ENV{DESTDIR}${folder}\")
        file(CREATE_LINK ${target} \"\$ENV{DESTDIR}${name}\" SYMBOLIC)" COMPONENT bench)
endfunction()
install_link(../lib/headunit/bench/bin/headunit-bench ${CMAKE_INSTALL_PREFIX}/bin/headunit-bench)
install_link(../../../../bin/headunit-engine ${bench_folder}/bin/headunit-engine)
install_link(../../libVX_Logcat.so ${bench_folder}/lib/libVX_Logcat.so)
install_link(../../../share/headunit ${bench_folder}/resources)

# headunit-dev: what the author of a source program needs.
set(author_documents source-programs.md first-program.md interfaces.md pages.md glossary.md)
list(TRANSFORM author_documents PREPEND ${CMAKE_SOURCE_DIR}/docs/)
install(FILES ${author_documents} DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/headunit-dev COMPONENT dev)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/examples/ DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/headunit-dev/examples USE_SOURCE_PERMISSIONS
    COMPONENT dev)
install(FILES ${protocol_header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/headunit COMPONENT dev)
# Debian's Python, whichever it is, looks there; with another prefix PYTHONPATH names it.
install(FILES ${protocol_module} DESTINATION lib/python3/dist-packages COMPONENT dev)
install(FILES ${package_files}/com.corvane.Endpoint.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/dbus-1/interfaces COMPONENT dev)

foreach(component IN ITEMS engine bench dev)
    set(folder ${CMAKE_INSTALL_DATADIR}/doc/headunit-${component})
    install(FILES ${package_files}/debian/copyright DESTINATION ${folder} COMPONENT ${component})
    install_compressed(${package_files}/debian/changelog ${folder} changelog ${component})
    install(FILES ${CMAKE_SOURCE_DIR}/CHANGELOG.md DESTINATION ${folder} COMPONENT ${component})
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME headunit)
set(CPACK_PACKAGE_CONTACT "Head unit maintainers <maintainers@headunit.example>")
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL engine bench dev)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_ENGINE_DESCRIPTION "main process of a marine audio head unit
Decides which page is in front and which source plays in each zone, launches
and supervises the source programs, speaks with the companion
microcontroller, drives the audio DSP and lets displays on the boat's network
control the stereo. With the units of systemd that a board needs.")
set(CPACK_DEBIAN_BENCH_DESCRIPTION "simulated unit around the head unit's engine
Every device and source program of a head unit, simulated, with a console to
see and break all of it without a board.")
set(CPACK_DEBIAN_DEV_DESCRIPTION "what a source program of the head unit is written against
The messages on the bus of the head unit: documents, numbers for C, C++ and
Python, descriptions of the interfaces, and programs to begin with.")
set(CPACK_DEBIAN_ENGINE_PACKAGE_NAME headunit-engine)
set(CPACK_DEBIAN_BENCH_PACKAGE_NAME headunit-bench)
set(CPACK_DEBIAN_DEV_PACKAGE_NAME headunit-dev)
set(CPACK_DEBIAN_ENGINE_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_BENCH_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_DEV_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_DEV_PACKAGE_SUGGESTS "headunit-bench, libsystemd-dev, nlohmann-json3-dev, python3-dbus-next")
set(CPACK_DEBIAN_ENGINE_PACKAGE_DEPENDS "dbus-daemon, systemd (>= 252)")
set(CPACK_DEBIAN_ENGINE_PACKAGE_RECOMMENDS "udev, xserver-xorg-core, xauth")
set(CPACK_DEBIAN_ENGINE_PACKAGE_SUGGESTS "headunit-bench")
set(CPACK_DEBIAN_BENCH_PACKAGE_DEPENDS "headunit-engine (= ${PROJECT_VERSION}), dbus-daemon")
set(CPACK_DEBIAN_BENCH_PACKAGE_RECOMMENDS "xvfb")
set(scripts ${package_files}/debian)
set(CPACK_DEBIAN_ENGINE_PACKAGE_CONTROL_EXTRA ${scripts}/conffiles ${scripts}/postinst ${scripts}/prerm ${scripts}/postrm)
include(CPack)
