# What hosts find when this is installed: the CMake package, whose components are the three libraries, a pkg-config file
# for each of them, the documents.
include(CMakePackageConfigHelpers)

# The three, each after what it is built on. The configuration file of the package tells what each one needs.
set(ORRERY_LIBRARIES QuayCore OrreryCore OrreryCoreVariables)
set(ORRERY_QUAYCORE_DESCRIPTION "Variant values: scalars and n-dimensional arrays of 25 element types")
set(ORRERY_ORRERYCORE_DESCRIPTION "A tree of named properties, and the data files that keep it")
set(ORRERY_ORRERYCOREVARIABLES_DESCRIPTION "Variables with units and axes, change tracking, measurements, results")

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/OrreryCoreVariables)
configure_package_config_file(
    ${PROJECT_SOURCE_DIR}/cmake/OrreryCoreVariablesConfig.cmake.in
    ${PROJECT_BINARY_DIR}/OrreryCoreVariablesConfig.cmake
    INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(
    ${PROJECT_BINARY_DIR}/OrreryCoreVariablesConfigVersion.cmake
    COMPATIBILITY ${ORRERY_COMPATIBILITY})
install(FILES
    ${PROJECT_BINARY_DIR}/OrreryCoreVariablesConfig.cmake
    ${PROJECT_BINARY_DIR}/OrreryCoreVariablesConfigVersion.cmake
    DESTINATION ${package_dir} COMPONENT development)
foreach(library IN LISTS ORRERY_LIBRARIES)
    install(EXPORT ${library}Targets NAMESPACE Orrery:: DESTINATION ${package_dir} COMPONENT development)
endforeach()

# orrery_pkg_config(<library> [REQUIRES <modules of pkg-config>] [CFLAGS <flags>]): <library>.pc. What a library uses
# privately stands nowhere in it: there are shared libraries only, which know what they were linked with.
function(orrery_pkg_config library)
    cmake_parse_arguments(arg "" "REQUIRES;CFLAGS" "" ${ARGN})
    string(TOUPPER ${library} upper)
    set(PC_NAME ${library})
    set(PC_DESCRIPTION ${ORRERY_${upper}_DESCRIPTION})
    set(PC_REQUIRES ${arg_REQUIRES})
    string(STRIP "-I\${includedir} ${arg_CFLAGS}" PC_CFLAGS)
    set(PC_LIBDIR "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
    set(PC_INCLUDEDIR "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}/orrery")
    if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}" OR IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
        set(PC_PREFIX ${CMAKE_INSTALL_PREFIX})
        set(PC_LIBDIR ${CMAKE_INSTALL_FULL_LIBDIR})
        set(PC_INCLUDEDIR ${CMAKE_INSTALL_FULL_INCLUDEDIR}/orrery)
    else() # from where the file stands, so that the installed folder may be moved
        file(RELATIVE_PATH up "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
        string(REGEX REPLACE "/$" "" up "${up}")
        set(PC_PREFIX "\${pcfiledir}/${up}")
    endif()
    configure_file(${PROJECT_SOURCE_DIR}/cmake/library.pc.in ${PROJECT_BINARY_DIR}/${library}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${library}.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endfunction()

orrery_pkg_config(QuayCore)
# Qt as Debian builds it refuses code that may end up in a program at a fixed place. CMake adds the flag by itself.
orrery_pkg_config(OrreryCore REQUIRES "QuayCore = ${PROJECT_VERSION}, Qt5Core >= 5.15" CFLAGS -fPIC)
orrery_pkg_config(OrreryCoreVariables REQUIRES "OrreryCore = ${PROJECT_VERSION}, Qt5Core >= 5.15")

# The documents, in folders as in the repository, so that their links lead somewhere.
install(FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/CHANGELOG.md ${PROJECT_SOURCE_DIR}/CONTRIBUTING.md
    DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documents)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs ${PROJECT_SOURCE_DIR}/examples
    DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documents
    FILES_MATCHING
        PATTERN *.md PATTERN *.png PATTERN *.svg
        PATTERN *.h PATTERN *.cpp PATTERN CMakeLists.txt
        PATTERN reference EXCLUDE PATTERN build EXCLUDE)
set(ORRERY_REFERENCE_DIR ${PROJECT_BINARY_DIR}/docs/html CACHE PATH
    "Where Doxygen has written the reference; it is installed if it is there")
install(DIRECTORY ${ORRERY_REFERENCE_DIR}/
    DESTINATION ${CMAKE_INSTALL_DOCDIR}/reference COMPONENT documents OPTIONAL)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT licence)
