# What every target of ours is compiled with: warnings, Qt's stricter modes, and the sanitizers asked for.

add_library(halvex_build_flags INTERFACE)
target_compile_options(halvex_build_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual -Werror)
target_compile_definitions(halvex_build_flags INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS QT_NO_FOREACH QT_NO_URL_CAST_FROM_STRING
    QT_DEPRECATED_WARNINGS)

if(HALVEX_SANITIZE)
    target_compile_options(halvex_build_flags INTERFACE
        -fsanitize=${HALVEX_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(halvex_build_flags INTERFACE -fsanitize=${HALVEX_SANITIZE})
endif()
