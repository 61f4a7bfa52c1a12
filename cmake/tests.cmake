# halvex_add_test(NAME SOURCES... [LABELS ...] [TIMEOUT seconds])
# Adds a QtTest program and registers it with CTest. The label names the test ring; default: unit.

find_package(Qt5 5.15 REQUIRED COMPONENTS Test)

# A sanitizer makes a program several times slower.
set(halvex_timeout_factor 1)
if(HALVEX_SANITIZE)
    set(halvex_timeout_factor 5)
endif()

# The path of the source tree in test programs.
set(halvex_tree ${CMAKE_SOURCE_DIR})
if(WIN32)
    set(halvex_tree Z:${CMAKE_SOURCE_DIR}) # under Wine
endif()

function(halvex_add_test name)
    cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LABELS;LIBRARIES" ${ARGN})
    if(NOT ARG_SOURCES)
        set(ARG_SOURCES ${name}.cpp)
    endif()
    if(NOT ARG_LABELS)
        set(ARG_LABELS unit)
    endif()
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 120)
    endif()
    add_executable(${name} ${ARG_SOURCES})
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
    target_link_libraries(${name} PRIVATE halvex test_headers Qt5::Test ${ARG_LIBRARIES})
    add_test(NAME ${name} COMMAND ${name})
    math(EXPR timeout "${ARG_TIMEOUT} * ${halvex_timeout_factor}")
    set_tests_properties(${name} PROPERTIES
        LABELS "${ARG_LABELS}" TIMEOUT ${timeout} ENVIRONMENT "${halvex_sanitizer_environment}")
endfunction()
