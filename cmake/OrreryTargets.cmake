# What the targets of this project have in common.

# Until 1.0 a minor version may break hosts, after that a major one may. The SONAME and find_package()'s version check
# say the same: what one of them lets in, the other doesn't refuse.
if(PROJECT_VERSION_MAJOR EQUAL 0)
    set(ORRERY_ABI_VERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
    set(ORRERY_COMPATIBILITY SameMinorVersion)
else()
    set(ORRERY_ABI_VERSION ${PROJECT_VERSION_MAJOR})
    set(ORRERY_COMPATIBILITY SameMajorVersion)
endif()

# An installed folder may be moved as one, so what is in it finds its libraries from where it stands. Below /usr the
# loader knows the folder anyway.
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    set(ORRERY_LIBRARY_RPATH "")
    set(ORRERY_PROGRAM_RPATH "")
else()
    file(RELATIVE_PATH ORRERY_PROGRAM_RPATH ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
    set(ORRERY_PROGRAM_RPATH "$ORIGIN/${ORRERY_PROGRAM_RPATH}")
    set(ORRERY_LIBRARY_RPATH "$ORIGIN")
endif()

# Language level, warnings, sanitizers and floating-point rules of everything that is compiled here.
function(orrery_target_defaults target)
    target_compile_features(${target} PUBLIC cxx_std_17)
    set_target_properties(${target} PROPERTIES
        CXX_EXTENSIONS OFF
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        POSITION_INDEPENDENT_CODE ON)
    # The order of floating-point operations is part of what the library promises: nothing may be fused.
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wpedantic -Wshadow -Wconversion -ffp-contract=off
        $<$<BOOL:${ORRERY_WARNINGS_AS_ERRORS}>:-Werror>)
    if(ORRERY_SANITIZE)
        target_compile_options(${target} PRIVATE
            -fsanitize=${ORRERY_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
        target_link_options(${target} PRIVATE -fsanitize=${ORRERY_SANITIZE})
    endif()
    if(ORRERY_BUILD_FUZZERS)
        target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link) # coverage of the libraries too
    endif()
endfunction()

# One shared library, Orrery::<name>, with its export header <name in lower case>_export.h. Its folders add
# their files with target_sources(); public headers go into the file set HEADERS.
function(orrery_add_library name)
    string(TOLOWER ${name} lower)
    add_library(${name} SHARED)
    add_library(Orrery::${name} ALIAS ${name})
    orrery_target_defaults(${name})

    include(GenerateExportHeader)
    set(exports ${PROJECT_BINARY_DIR}/exports)
    generate_export_header(${name} EXPORT_FILE_NAME ${exports}/${lower}_export.h)

    # Two sets: a build folder inside the source folder makes the one base a part of the other.
    target_sources(${name} PUBLIC
        FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR}
        FILE_SET exports TYPE HEADERS BASE_DIRS ${exports} FILES ${exports}/${lower}_export.h)
    target_include_directories(${name} PUBLIC
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
        $<BUILD_INTERFACE:${exports}>
        $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/orrery>)
    set_target_properties(${name} PROPERTIES
        VERSION ${PROJECT_VERSION}
        SOVERSION ${ORRERY_ABI_VERSION}
        INSTALL_RPATH "${ORRERY_LIBRARY_RPATH}"
        VERIFY_INTERFACE_HEADER_SETS ON)

    # An export file for each library: whoever asks for one gets that and what it is built on, no more.
    install(TARGETS ${name} EXPORT ${name}Targets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
        FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/orrery COMPONENT development
        FILE_SET exports DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/orrery COMPONENT development)
endfunction()

# orrery_add_test(<name> SOURCES ... [LIBRARIES ...] [LABEL <label>]): a GoogleTest program; each of its tests is
# one of CTest's.
function(orrery_add_test name)
    cmake_parse_arguments(arg "" "LABEL" "SOURCES;LIBRARIES" ${ARGN})
    set(properties TIMEOUT 300)
    add_executable(${name} ${arg_SOURCES})
    if(arg_LABEL)
        list(APPEND properties LABELS ${arg_LABEL})
        # Builds the tests of one label alone: the thread sanitizer has no use for the others.
        if(NOT TARGET ${arg_LABEL}_tests)
            add_custom_target(${arg_LABEL}_tests)
        endif()
        add_dependencies(${arg_LABEL}_tests ${name})
    endif()
    orrery_target_defaults(${name})
    # What is tested is in the libraries; a test's own code is compiled often and run once.
    target_compile_options(${name} PRIVATE -O0
        $<$<CXX_COMPILER_ID:Clang>:-Wno-gnu-zero-variadic-macro-arguments>) # GoogleTest's own macros
    target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} GTest::gmock GTest::gtest_main)
    gtest_discover_tests(${name}
        PROPERTIES ${properties}
        DISCOVERY_TIMEOUT 60)
endfunction()

# orrery_add_benchmark(<name> SOURCES ... [LIBRARIES ...]): a Google Benchmark program.
function(orrery_add_benchmark name)
    cmake_parse_arguments(arg "" "" "SOURCES;LIBRARIES" ${ARGN})
    add_executable(${name} ${arg_SOURCES})
    orrery_target_defaults(${name})
    target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} benchmark::benchmark_main)
endfunction()
