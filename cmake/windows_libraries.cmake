# The libraries for a build by mingw.cmake: those of which headers are all, as Debian installs them for
# this machine, and SQLite by its source. /usr/include as a whole would bring the headers of its C
# library.

set(headers ${CMAKE_BINARY_DIR}/library-headers)
file(MAKE_DIRECTORY ${headers})
foreach(name CLI nlohmann asio asio.hpp)
    if(NOT EXISTS /usr/include/${name})
        message(FATAL_ERROR
            "/usr/include/${name} is missing: install libcli11-dev, nlohmann-json3-dev and libasio-dev.")
    endif()
    file(CREATE_LINK /usr/include/${name} ${headers}/${name} SYMBOLIC)
endforeach()

foreach(library CLI11::CLI11 nlohmann_json::nlohmann_json)
    add_library(${library} INTERFACE IMPORTED GLOBAL)
    target_include_directories(${library} INTERFACE ${headers})
endforeach()

add_library(tarnex_asio INTERFACE)
target_include_directories(tarnex_asio SYSTEM INTERFACE ${headers})
target_link_libraries(tarnex_asio INTERFACE ws2_32 mswsock)

# tarnex_late_library(<name>): tarnex_late_<name>, a library of Windows that is loaded when something of
# it is called first. Finding and loading one that nobody calls takes most of a service's start.
function(tarnex_late_library name)
    set(late ${CMAKE_BINARY_DIR}/late/${name})
    add_library(tarnex_late_${name} INTERFACE)
    target_link_libraries(tarnex_late_${name} INTERFACE ${late}.a delayimp)
    if(EXISTS ${late}.a)
        return()
    endif()
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=lib${name}.a
        OUTPUT_VARIABLE library OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND ${CMAKE_NM} --defined-only ${library}
        OUTPUT_VARIABLE symbols ERROR_QUIET COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX MATCHALL " T [A-Za-z0-9_]+" functions "${symbols}")
    list(TRANSFORM functions REPLACE "^ T " "    ")
    list(JOIN functions "\n" functions)
    file(WRITE ${late}.def "LIBRARY ${name}.dll\nEXPORTS\n${functions}\n")
    execute_process(COMMAND ${CMAKE_DLLTOOL} --input-def ${late}.def --output-delaylib ${late}.a
        COMMAND_ERROR_IS_FATAL ANY)
endfunction()
foreach(name comctl32 comdlg32 gdi32 iphlpapi ole32 rstrtmgr setupapi shell32 user32)
    tarnex_late_library(${name})
endforeach()

# Into the program, which so needs no library beside it.
set(sqlite ${CMAKE_BINARY_DIR}/sqlite)
if(NOT EXISTS ${sqlite}/sqlite3.c)
    message(STATUS "Fetching the source of SQLite")
    execute_process(COMMAND ${CMAKE_CURRENT_LIST_DIR}/sqlite-amalgamation ${sqlite}
        COMMAND_ERROR_IS_FATAL ANY)
endif()
enable_language(C RC)
add_library(tarnex_sqlite STATIC ${sqlite}/sqlite3.c)
target_include_directories(tarnex_sqlite SYSTEM PUBLIC ${sqlite})
target_compile_options(tarnex_sqlite PRIVATE -O2)
# One thread uses a database; what the programs do not use costs size.
target_compile_definitions(tarnex_sqlite PRIVATE SQLITE_THREADSAFE=2 SQLITE_DEFAULT_MEMSTATUS=0
    SQLITE_OMIT_LOAD_EXTENSION SQLITE_OMIT_DEPRECATED SQLITE_OMIT_SHARED_CACHE
    SQLITE_OMIT_PROGRESS_CALLBACK SQLITE_OMIT_TRACE SQLITE_OMIT_JSON)
add_library(SQLite::SQLite3 ALIAS tarnex_sqlite)
