# The libraries for a build by mingw.cmake: those of which headers are all, as Debian installs them for
# this machine. /usr/include as a whole would bring the headers of its C library.

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
