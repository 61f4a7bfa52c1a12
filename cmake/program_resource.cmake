# halvex_describe_program(TARGET NAME DESCRIPTION)
# The icon and the version that Windows shows for the program NAME.exe. Nothing elsewhere.

function(halvex_describe_program target name description)
    if(NOT WIN32)
        return()
    endif()
    configure_file(${CMAKE_SOURCE_DIR}/packaging/windows/program.rc.in ${target}.rc @ONLY)
    # A library of its own: the resource compiler does not know the C++ compiler's options.
    add_library(${target}_resource OBJECT ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
    target_sources(${target} PRIVATE $<TARGET_OBJECTS:${target}_resource>)
endfunction()
