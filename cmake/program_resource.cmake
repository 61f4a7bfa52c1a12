# halvex_describe_program(TARGET NAME DESCRIPTION)
# Adds the icon and version that Windows shows for NAME.exe. Has no effect on other systems.

function(halvex_describe_program target name description)
    if(NOT WIN32)
        return()
    endif()
    configure_file(${CMAKE_SOURCE_DIR}/packaging/windows/program.rc.in ${target}.rc @ONLY)
    # In a separate library, because the resource compiler does not know the C++ compiler's options.
    add_library(${target}_resource OBJECT ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
    target_sources(${target} PRIVATE $<TARGET_OBJECTS:${target}_resource>)
endfunction()
