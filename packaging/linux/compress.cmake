# Run before the package is made of what was installed: Debian keeps manual pages and changelogs compressed.
file(GLOB texts
    ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*/usr/share/man/man*/*
    ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*/usr/share/doc/*/changelog)
execute_process(COMMAND gzip -9 -n ${texts} COMMAND_ERROR_IS_FATAL ANY)
