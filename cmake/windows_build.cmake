# Beside the build for this machine the one by the preset "windows". Its programs run under Wine.

find_program(TARNEX_MINGW x86_64-w64-mingw32-g++-posix)
if(NOT TARNEX_MINGW)
    message(FATAL_ERROR "There is no compiler for Windows: install g++-mingw-w64-x86-64-posix, "
        "or do without by -DTARNEX_WINE=OFF.")
endif()
set(TARNEX_WINDOWS_BUILD ${PROJECT_SOURCE_DIR}/build/windows)

# It stands behind the tests of this machine: two builds at once would want twice the cores.
function(tarnex_windows_build)
    cmake_host_system_information(RESULT cores QUERY NUMBER_OF_LOGICAL_CORES)
    add_custom_target(windows ALL WORKING_DIRECTORY ${PROJECT_SOURCE_DIR} USES_TERMINAL VERBATIM
        COMMAND sh -c "[ -f '${TARNEX_WINDOWS_BUILD}/build.ninja' ] || cmake --preset windows"
        COMMAND ${CMAKE_COMMAND} --build --preset windows --parallel ${cores})
    get_property(tests GLOBAL PROPERTY tarnex_test_programs)
    add_dependencies(windows ${tests})
endfunction()

# tarnex_windows_test(<name> <argument of under-wine>...): a test of what is built there.
function(tarnex_windows_test name)
    add_test(NAME ${name}.windows COMMAND ${PROJECT_SOURCE_DIR}/tests/under-wine ${ARGN})
    set_tests_properties(${name}.windows PROPERTIES TIMEOUT 1200 SKIP_RETURN_CODE 77
        ENVIRONMENT TARNEX_WINDOWS=${TARNEX_WINDOWS_BUILD}/bin)
    if(name MATCHES "_windows\\.") # clicked through, one after the other, and so begun early
        set_tests_properties(${name}.windows PROPERTIES RESOURCE_LOCK windows COST 500)
    endif()
endfunction()
