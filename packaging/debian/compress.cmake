# Run by CPack on what it has installed, before it makes the packages: Debian keeps man pages and changelogs packed.
# Without name and time, so that the same sources give the same packages.
file(GLOB_RECURSE pages
    ${CPACK_TEMPORARY_DIRECTORY}/*/usr/share/man/man?/*.?
    ${CPACK_TEMPORARY_DIRECTORY}/*/usr/share/doc/*/changelog)
foreach(page IN LISTS pages)
    if(page MATCHES "/changelog$")
        file(RENAME ${page} ${page}.Debian)
        set(page ${page}.Debian)
    endif()
    execute_process(COMMAND gzip -9nf ${page} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
