# The Debian packages, made by cpack (see build-deb): tarnexcomm, and tarnexcomm-view with what
# needs the libraries of the X Window System. Every install rule that names no component belongs to
# the former, a rule with COMPONENT view to the latter.

set(changelog ${CMAKE_CURRENT_SOURCE_DIR}/debian/changelog)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${changelog})
file(STRINGS ${changelog} newest_entry LIMIT_COUNT 1)
if(NOT newest_entry MATCHES "^tarnexcomm \\(${PROJECT_VERSION}\\)")
    message(FATAL_ERROR "packaging/debian/changelog has no entry for version ${PROJECT_VERSION}")
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tarnexcomm)
set(CPACK_PACKAGE_CONTACT "TarnexComm developers <tarnexcomm@tarnex.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL service)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_SERVICE_PACKAGE_NAME tarnexcomm)
set(CPACK_DEBIAN_SERVICE_PACKAGE_SECTION comm)
set(CPACK_DEBIAN_SERVICE_PACKAGE_DEPENDS
    "systemd | systemd-standalone-sysusers | systemd-sysusers")
set(CPACK_DEBIAN_SERVICE_DESCRIPTION
"service beside a GSM alarm unit on a serial port
TarnexComm keeps up a GSM alarm unit on a serial port and tells local
monitoring programs, over UDP, how it fares. What they report leaves as SMS
through the unit and by mail; SMS from two telephone numbers are read as
commands for them. All of it is logged in an SQLite database.

With simulators of the unit, of a monitoring program and of a mail server.")
set(CPACK_DEBIAN_SERVICE_PACKAGE_CONTROL_EXTRA
    ${CMAKE_CURRENT_SOURCE_DIR}/debian/postinst
    ${CMAKE_CURRENT_SOURCE_DIR}/debian/prerm
    ${CMAKE_CURRENT_SOURCE_DIR}/debian/postrm)

if(TARGET tarnex-view)
    list(APPEND CPACK_COMPONENTS_ALL view)
    set(CPACK_DEBIAN_SERVICE_PACKAGE_RECOMMENDS tarnexcomm-view)
    set(CPACK_DEBIAN_VIEW_PACKAGE_NAME tarnexcomm-view)
    set(CPACK_DEBIAN_VIEW_PACKAGE_SECTION comm)
    set(CPACK_DEBIAN_VIEW_PACKAGE_DEPENDS "tarnexcomm (= ${PROJECT_VERSION})")
    set(CPACK_DEBIAN_VIEW_PACKAGE_RECOMMENDS "fonts-wqy-zenhei | fonts-noto-cjk")
    set(CPACK_DEBIAN_VIEW_DESCRIPTION
"windows of TarnexComm
The windows of the service in debug mode, of the firmware update and of the
debug console. The service and the firmware update from the command line work
without them.")
endif()

include(CPack)
