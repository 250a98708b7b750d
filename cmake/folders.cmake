# One folder, one static library (tarnex_<folder>), one test program (test_<folder>).

find_package(Threads REQUIRED)

add_library(tarnex_options INTERFACE)
target_compile_options(tarnex_options INTERFACE -Wall -Wextra -Werror)
target_compile_definitions(tarnex_options INTERFACE TARNEX_VERSION="${PROJECT_VERSION}")
if(CMAKE_UNITY_BUILD)
    # Where several files are compiled as one, GCC takes each for a header.
    target_compile_options(tarnex_options INTERFACE
        $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
endif()
if(TARNEX_SANITIZE)
    target_compile_options(tarnex_options INTERFACE
        -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
    target_link_options(tarnex_options INTERFACE -fsanitize=address,undefined)
elseif(CMAKE_BUILD_TYPE STREQUAL "Release")
    # Out of a precompiled header GCC 12 warns of the library's own lines, once they are inlined.
    set(CMAKE_DISABLE_PRECOMPILE_HEADERS ON)
    # GCC 12 takes plain string assignments, once inlined, for overlapping copies.
    target_compile_options(tarnex_options INTERFACE
        -ffunction-sections -fdata-sections $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
    target_link_options(tarnex_options INTERFACE -Wl,--gc-sections -Wl,--as-needed)
endif()

# tarnex_precompiled(<name> <library>... HEADERS <header>...): what nearly every file includes, compiled
# once. No header of our own stands there: files that may not include it would find it.
function(tarnex_precompiled name)
    cmake_parse_arguments(PARSE_ARGV 1 with "" "" HEADERS)
    add_library(tarnex_precompiled_${name} OBJECT ${PROJECT_SOURCE_DIR}/cmake/precompiled.cpp)
    target_link_libraries(tarnex_precompiled_${name} PRIVATE ${with_UNPARSED_ARGUMENTS})
    target_precompile_headers(tarnex_precompiled_${name} PRIVATE <algorithm> <array> <chrono>
        <coroutine> <cstdint> <deque> <filesystem> <functional> <map> <memory> <optional> <set>
        <sstream> <string> <string_view> <variant> <vector> ${with_HEADERS})
endfunction()
tarnex_precompiled(folders tarnex_options)

# tarnex_folder(<folder> <library it uses>...): every .cpp of src/<folder>, not of its subfolders.
# A folder is found by those who link it and by nobody else: each has an include path of its own, in
# which nothing but a link to it stands. So an include against the arrows does not compile.
function(tarnex_folder folder)
    string(REPLACE "/" "_" name ${folder})
    set(include ${CMAKE_BINARY_DIR}/include/${name})
    cmake_path(GET folder PARENT_PATH above)
    file(MAKE_DIRECTORY ${include}/${above})
    file(CREATE_LINK ${PROJECT_SOURCE_DIR}/src/${folder} ${include}/${folder} SYMBOLIC)
    file(GLOB sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/${folder}/*.cpp)
    list(FILTER sources EXCLUDE REGEX "_main\\.cpp$")
    if(sources)
        add_library(tarnex_${name} STATIC ${sources})
        target_precompile_headers(tarnex_${name} REUSE_FROM tarnex_precompiled_folders)
        set(scope PUBLIC)
    else()
        add_library(tarnex_${name} INTERFACE)
        set(scope INTERFACE)
    endif()
    target_include_directories(tarnex_${name} ${scope} ${include})
    target_link_libraries(tarnex_${name} ${scope} tarnex_options ${ARGN})
endfunction()

# tarnex_test(<folder> <library>...): every *_test.cpp of tests/<folder> in one program, which is one
# entry of ctest: a process for each case would cost more than most cases do. Files in left_out stay out;
# beside_<folder> is a command of this machine that is to run the program when that is one for Windows.
function(tarnex_test folder)
    string(REPLACE "/" "_" name ${folder})
    file(GLOB sources RELATIVE ${CMAKE_CURRENT_SOURCE_DIR}
        CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/*.cpp)
    list(REMOVE_ITEM sources ${left_out})
    if(sources)
        add_executable(test_${name} ${sources})
        target_include_directories(test_${name} PRIVATE ${PROJECT_SOURCE_DIR})
        target_link_libraries(test_${name} PRIVATE ${ARGN} tarnex_test_options GTest::gtest_main)
        target_precompile_headers(test_${name} REUSE_FROM tarnex_precompiled_tests)
        set_target_properties(test_${name} PROPERTIES
            RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
        add_test(NAME test_${name} COMMAND test_${name})
        set_tests_properties(test_${name} PROPERTIES TIMEOUT 600 SKIP_RETURN_CODE 77)
        set_property(GLOBAL APPEND PROPERTY tarnex_test_programs test_${name})
        set(beside "")
        if(beside_${folder})
            set(beside --for ${beside_${folder}} wine)
        endif()
        if(WIN32)
            set_property(TARGET test_${name} APPEND PROPERTY CROSSCOMPILING_EMULATOR ${beside})
        elseif(TARNEX_WINE)
            tarnex_windows_test(test_${name} ${beside}
                ${TARNEX_WINDOWS_BUILD}/tests/test_${name}.exe)
        endif()
    endif()
endfunction()
