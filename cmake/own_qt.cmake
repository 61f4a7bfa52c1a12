# halvex_own_qt(KIND VARIABLE)
# Sets the prefix of a Qt that packaging/qt/build-qt has built; an error if it has not.

function(halvex_own_qt kind variable)
    set(build_qt ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/../packaging/qt/build-qt)
    execute_process(
        COMMAND ${build_qt} --where ${kind}
        OUTPUT_VARIABLE prefix OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    if(NOT EXISTS ${prefix}/complete)
        message(FATAL_ERROR "This Qt has not been built yet: run packaging/qt/build-qt ${kind}")
    endif()
    set(${variable} ${prefix} PARENT_SCOPE)
endfunction()
