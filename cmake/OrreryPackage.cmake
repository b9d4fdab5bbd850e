# find_package(OrreryCoreVariables) for hosts: one package with the three libraries.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/OrreryCoreVariables)

configure_package_config_file(
    ${PROJECT_SOURCE_DIR}/cmake/OrreryCoreVariablesConfig.cmake.in
    ${PROJECT_BINARY_DIR}/OrreryCoreVariablesConfig.cmake
    INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(
    ${PROJECT_BINARY_DIR}/OrreryCoreVariablesConfigVersion.cmake
    COMPATIBILITY SameMinorVersion) # before 1.0 a minor version may break hosts

install(FILES
    ${PROJECT_BINARY_DIR}/OrreryCoreVariablesConfig.cmake
    ${PROJECT_BINARY_DIR}/OrreryCoreVariablesConfigVersion.cmake
    DESTINATION ${package_dir})
install(EXPORT OrreryCoreVariablesTargets NAMESPACE Orrery:: DESTINATION ${package_dir})
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
