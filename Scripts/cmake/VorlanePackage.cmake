# Installation and packages. Users of a host need the component "runtime", its developers also "development".
include(CMakePackageConfigHelpers)

set(VORLANE_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Vorlane)

install(TARGETS vorlane_shared EXPORT VorlaneSharedTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development)
install(TARGETS vorlane_static EXPORT VorlaneStaticTargets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
set_target_properties(vorlane_simulator PROPERTIES EXPORT_NAME simulator)
install(TARGETS vorlane_simulator EXPORT VorlaneSimulatorTargets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
foreach(part Static Shared Simulator)
    install(EXPORT Vorlane${part}Targets NAMESPACE Vorlane:: DESTINATION ${VORLANE_CMAKE_DIR} COMPONENT development)
endforeach()

install(DIRECTORY ${VORLANE_STAGED_INCLUDES}/vorlane DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)

list(JOIN VORLANE_FOUND_PACKAGES " " VORLANE_FOUND_PACKAGES)
list(JOIN VORLANE_FOUND_MODULES " " VORLANE_FOUND_MODULES)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/VorlaneConfig.cmake.in ${PROJECT_BINARY_DIR}/VorlaneConfig.cmake
                              INSTALL_DESTINATION ${VORLANE_CMAKE_DIR} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/VorlaneConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/VorlaneConfig.cmake ${PROJECT_BINARY_DIR}/VorlaneConfigVersion.cmake
        DESTINATION ${VORLANE_CMAKE_DIR} COMPONENT development)

# Relative to the file's folder, so that an installation can be moved.
set(VORLANE_PC_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH VORLANE_PC_PREFIX /prefix/${VORLANE_PC_DIR} /prefix)
string(REGEX REPLACE "/$" "" VORLANE_PC_PREFIX "${VORLANE_PC_PREFIX}")
configure_file(${CMAKE_CURRENT_LIST_DIR}/vorlane.pc.in ${PROJECT_BINARY_DIR}/vorlane.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/vorlane.pc DESTINATION ${VORLANE_PC_DIR} COMPONENT development)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vorlane)
set(CPACK_PACKAGE_VENDOR Vorlane)
set(CPACK_PACKAGE_CONTACT "Vorlane <packages@vorlane.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://vorlane.example/")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libvorlane)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
list(JOIN VORLANE_IMAGE_PACKAGES ", " packages)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "${packages}")
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "Client library of a hosted engagement service: the shared library.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libvorlane-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
list(JOIN VORLANE_DEVELOPMENT_PACKAGES ", " packages)
# The library links only with the version of nlohmann/json that it was built with.
math(EXPR next_json_patch "${json_patch} + 1")
string(REPLACE "nlohmann-json3-dev" "nlohmann-json3-dev (>= ${nlohmann_json_VERSION}), nlohmann-json3-dev (<< \
${json_major}.${json_minor}.${next_json_patch})" packages "${packages}")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libvorlane (= ${PROJECT_VERSION}), ${packages}")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "Client library of a hosted engagement service: headers, static library and the simulated phone for tests.")
include(CPack)
