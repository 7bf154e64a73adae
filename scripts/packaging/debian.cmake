# Settings of the Debian package built by `cpack -G DEB` (see the README's "Install").
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME mavix-utility)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_CONTACT "Mavix Utility developers <mavix@example.com>")
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${CPACK_PACKAGE_CONTACT}")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION electronics)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE https://example.com/mavix)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Qt's own texts (message box buttons, file dialogs) in the user's language.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS qt6-translations-l10n)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS OFF)
# The Python module mavix is built for the interpreter it was built with; its pytest plugin needs
# pytest.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "${MAVIX_PYTHON_DEPENDS}")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS python3-pytest)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "configure Mavix network devices and exchange data with them")
# CPack puts the summary first and indents every line; an empty line becomes the paragraph mark.
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "Mavix Utility is a desktop tool for engineers who work with network devices
built around the Mavix hardware TCP/IP core. Over the device's UDP register
protocol and its TCP data port it reads and rewrites the device's network
settings, reads and writes any register range as a hex dump, streams a file
to the device and records what the device streams back, drives its serial
and GPIB bridge modules, and in server mode lets scripts read and write
registers over a plain-text TCP service.

The package also holds mavix, a command-line tool for scripts and test
benches, and mavix-sim, a software Mavix device for trying every feature
without hardware.")

# Debian wants the changelog and the man pages compressed.
set(MAVIX_PACKAGING_DIR ${CMAKE_BINARY_DIR}/packaging)
configure_file(${CMAKE_CURRENT_LIST_DIR}/changelog ${MAVIX_PACKAGING_DIR}/changelog @ONLY)
set(MAVIX_GZIPPED ${MAVIX_PACKAGING_DIR}/changelog.gz)
add_custom_command(OUTPUT ${MAVIX_PACKAGING_DIR}/changelog.gz
    COMMAND gzip -n -9 -c ${MAVIX_PACKAGING_DIR}/changelog > ${MAVIX_PACKAGING_DIR}/changelog.gz
    DEPENDS ${MAVIX_PACKAGING_DIR}/changelog)
foreach(page ${MAVIX_MAN_PAGES})
    get_filename_component(name ${page} NAME)
    add_custom_command(OUTPUT ${MAVIX_PACKAGING_DIR}/${name}.gz
        COMMAND gzip -n -9 -c ${page} > ${MAVIX_PACKAGING_DIR}/${name}.gz
        DEPENDS ${page})
    list(APPEND MAVIX_GZIPPED ${MAVIX_PACKAGING_DIR}/${name}.gz)
    install(FILES ${MAVIX_PACKAGING_DIR}/${name}.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endforeach()
add_custom_target(packaging_files ALL DEPENDS ${MAVIX_GZIPPED})
install(FILES ${MAVIX_PACKAGING_DIR}/changelog.gz ${CMAKE_CURRENT_LIST_DIR}/copyright
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/mavix-utility)
include(CPack)
