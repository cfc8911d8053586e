# Debian packages by cpack, one for each component. scripts/package makes them from a build for /usr.
if(NOT PROJECT_IS_TOP_LEVEL OR NOT BUILD_SHARED_LIBS)
  return()
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME orvane)
set(CPACK_PACKAGE_CONTACT "The Orvane authors <orvane@localhost>" CACHE STRING "Maintainer named in the packages")
set(CPACK_PACKAGE_FILE_NAME orvane-${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime development)
if(ORVANE_BUILD_TOOLS)
  list(APPEND CPACK_COMPONENTS_ALL tools)
endif()

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Adds that the packages of one version belong together.
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME liborvane${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/debian/triggers)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "Two shared libraries: libvx makes and answers remote procedure calls; libbq
has the values, run loop, HTTP streams and XML trees that it stands on.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME liborvane-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "What it takes to build programs with libvx and libbq: headers, CMake package
and pkg-config modules.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME orvane-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION net)
set(CPACK_COMPONENT_TOOLS_DEPENDS runtime)
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "Command line tools that make such calls from the shell, and answer them.")

# What Debian wants otherwise than the components install it is arranged before packing.
string(TIMESTAMP package_date "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(${PROJECT_SOURCE_DIR}/packaging/debian/changelog.in ${PROJECT_BINARY_DIR}/packaging/changelog @ONLY)
configure_file(${PROJECT_SOURCE_DIR}/packaging/debian/ArrangeFiles.cmake.in
               ${PROJECT_BINARY_DIR}/packaging/ArrangeFiles.cmake @ONLY)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_BINARY_DIR}/packaging/ArrangeFiles.cmake)

include(CPack)
