# Compiler options of every target: warnings, Qt's stricter modes, and the selected sanitizers.

add_library(halvex_build_flags INTERFACE)
target_compile_options(halvex_build_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual -Werror
    -Wno-gnu-zero-variadic-macro-arguments) # clang and clang-tidy, in Qt's logging macros; gcc ignores it
# gcc 12 at -O3 warns of a write past the end of QByteArray's shared null, which implicit sharing excludes.
# clang-tidy reads the same command line and does not know the option.
target_compile_options(halvex_build_flags INTERFACE
    $<$<CXX_COMPILER_ID:GNU>:-Wno-stringop-overflow;-Wno-unknown-warning-option>)
target_compile_definitions(halvex_build_flags INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS QT_NO_FOREACH QT_NO_URL_CAST_FROM_STRING
    QT_DEPRECATED_WARNINGS)

# The sanitizers' options for tests and for the programs that they start.
set(halvex_sanitizer_environment
    "ASAN_OPTIONS=detect_stack_use_after_return=1:strict_string_checks=1:check_initialization_order=1"
    "UBSAN_OPTIONS=print_stacktrace=1"
    "TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1:suppressions=${CMAKE_SOURCE_DIR}/cmake/tsan_suppressions.txt")

if(HALVEX_SANITIZE)
    # gcc 12 warns of std::optional's storage as uninitialized when a sanitizer instruments it.
    target_compile_options(halvex_build_flags INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
    target_compile_options(halvex_build_flags INTERFACE
        -fsanitize=${HALVEX_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(halvex_build_flags INTERFACE -fsanitize=${HALVEX_SANITIZE})
endif()

# The thread sanitizer sees locks and queues only in a Core that was compiled with it, so programs load that
# Core first. Network and Test are the distribution's.
if(HALVEX_SANITIZE STREQUAL "thread")
    include(cmake/own_libraries.cmake)
    halvex_own_libraries(packaging/qt/build-qt tsan qt_prefix)
    set(CMAKE_BUILD_RPATH ${qt_prefix}/lib)
endif()

if(HALVEX_FUZZERS)
    target_compile_options(halvex_build_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()
