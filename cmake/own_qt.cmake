# halvex_own_qt(KIND VARIABLE)
# Where packaging/qt/build-qt has put that kind of Qt; an error when it was not made yet.

function(halvex_own_qt kind variable)
    set(build_qt ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/../packaging/qt/build-qt)
    execute_process(
        COMMAND ${build_qt} --where ${kind}
        OUTPUT_VARIABLE prefix OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    if(NOT EXISTS ${prefix}/complete)
        message(FATAL_ERROR "That Qt is not there yet: packaging/qt/build-qt ${kind} makes it.")
    endif()
    set(${variable} ${prefix} PARENT_SCOPE)
endfunction()
