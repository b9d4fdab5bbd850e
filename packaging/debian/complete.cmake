# Run by CPack on what it has installed, before it makes the packages: gives each of them what only a Debian package has.
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER ${component} upper)
    set(package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
    set(share ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr/share)
    set(here ${CMAKE_CURRENT_LIST_DIR})
    configure_file(${here}/copyright ${share}/doc/${package}/copyright COPYONLY)
    configure_file(${here}/changelog ${share}/doc/${package}/changelog.Debian COPYONLY)
    configure_file(${here}/${component}.lintian-overrides ${share}/lintian/overrides/${package} COPYONLY)
    # Changelogs and man pages are kept packed; without name and time, so that the same sources give the same packages.
    file(GLOB pages ${share}/man/man?/*.?)
    foreach(page IN LISTS pages ITEMS ${share}/doc/${package}/changelog.Debian)
        execute_process(COMMAND gzip -9nf ${page} COMMAND_ERROR_IS_FATAL ANY)
    endforeach()
    # Whatever the umask of who makes the packages.
    execute_process(COMMAND chmod -R u+rwX,go+rX,go-w ${CPACK_TEMPORARY_DIRECTORY}/${component}
        COMMAND_ERROR_IS_FATAL ANY)
endforeach()
