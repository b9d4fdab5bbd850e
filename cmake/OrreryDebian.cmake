# `cmake --build <folder> --target package`: four Debian packages of what the install components hold. The preset
# `package` configures such a folder with Debian's places; any other one makes packages that work as well.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME orrerycorevariables)
set(CPACK_PACKAGE_VENDOR "OrreryCoreVariables")
set(CPACK_PACKAGE_CONTACT "OrreryCoreVariables maintainers <maintainers@orrerycorevariables.example.org>"
    CACHE STRING "Who answers for the packages")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)

set(CPACK_COMPONENTS_ALL runtime development tools documents)
if(NOT ORRERY_BUILD_HOSTS)
    list(REMOVE_ITEM CPACK_COMPONENTS_ALL tools)
endif()
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SOURCE orrerycorevariables)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(debian_version ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})

# What the binaries need is read from them; our own libraries have no package yet that could tell.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

set(about "OrreryCoreVariables is a C++17 data model for programs that produce or
analyse numeric results: named variables with physical units and axes, in one
tree that is saved to a data file.
.
")

# The name carries the SONAME, so that two of them stand side by side while hosts move over.
set(runtime liborrerycorevariables${ORRERY_ABI_VERSION})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${runtime})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "data model for numeric results - shared libraries
${about}This package has the three shared libraries.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/debian/triggers)

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME liborrerycorevariables-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${runtime} (= ${debian_version}), qtbase5-dev (>= 5.15)")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "cmake, pkg-config, liborrerycorevariables-doc")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "data model for numeric results - development files
${about}This package has the headers, the links for the linker, and what CMake and
pkg-config need to find them.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME orrery-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION science)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${runtime} (>= ${debian_version}), fonts-dejavu-core")
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "data model for numeric results - command-line program
${about}This package has the program orrery, which imports the output of simulators
into data files, and lists, converts, joins, compares and draws what is in
them.")

set(CPACK_DEBIAN_DOCUMENTS_PACKAGE_NAME liborrerycorevariables-doc)
set(CPACK_DEBIAN_DOCUMENTS_PACKAGE_SECTION doc)
set(CPACK_DEBIAN_DOCUMENTS_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_DOCUMENTS_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DOCUMENTS_DESCRIPTION "data model for numeric results - documents
${about}This package has the documents and the examples.")

# The newest entry of the packages' own changelog tells their version.
file(STRINGS ${PROJECT_SOURCE_DIR}/packaging/debian/changelog latest LIMIT_COUNT 1)
if(NOT latest MATCHES "^orrerycorevariables \\(${debian_version}\\) ")
    message(FATAL_ERROR "packaging/debian/changelog has no entry for ${debian_version}")
endif()
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/packaging/debian/changelog)

set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/packaging/debian/complete.cmake)
include(CPack)
