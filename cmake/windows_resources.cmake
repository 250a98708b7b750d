# What Windows wants to know of a program from its file: tarnex_windows_resources(<program> <description>
# [<messages of the event log>.mc]).
function(tarnex_windows_resources program description)
    set(folder ${CMAKE_CURRENT_BINARY_DIR}/resources)
    set(sources ${PROJECT_SOURCE_DIR}/src/programs)
    set(messages "")
    if(ARGN)
        cmake_path(GET ARGN STEM name)
        set(messages "#include \"${name}.rc\"")
        add_custom_command(OUTPUT ${folder}/${name}.rc ${folder}/${name}.h
            COMMAND ${CMAKE_MESSAGE_COMPILER} -h ${folder} -r ${folder} ${ARGN}
            DEPENDS ${ARGN} VERBATIM)
        set(generated ${folder}/${name}.rc)
    endif()
    configure_file(${sources}/windows.rc.in ${folder}/${program}.rc @ONLY)
    target_sources(${program} PRIVATE ${folder}/${program}.rc)
    set_source_files_properties(${folder}/${program}.rc PROPERTIES
        COMPILE_OPTIONS "-I${sources};-I${folder}"
        OBJECT_DEPENDS "${sources}/windows.manifest;${sources}/tarnexcomm.ico;${generated}")
endfunction()
