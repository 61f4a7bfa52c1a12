# halvex_own_libraries(SCRIPT KIND VARIABLE)
# Sets the prefix of the libraries that SCRIPT, a path in the source tree, has built; an error if it has not.

function(halvex_own_libraries script kind variable)
    execute_process(
        COMMAND ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/../${script} --where ${kind}
        OUTPUT_VARIABLE prefix OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    if(NOT EXISTS ${prefix}/complete)
        message(FATAL_ERROR "Libraries have not been built yet: run ${script} ${kind}")
    endif()
    set(${variable} ${prefix} PARENT_SCOPE)
endfunction()
