# What is installed, in three components: runtime (the shared libraries), development (what it takes to
# build against them) and tools. Everything finds its neighbours relative to itself, so that an
# installed tree can be moved.
include(CMakePackageConfigHelpers)

set(tools)
foreach(tool vxcall vxserve)
  if(TARGET ${tool})
    list(APPEND tools ${tool})
  endif()
endforeach()

# Libraries

install(TARGETS bq vx EXPORT OrvaneTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/BQ ${PROJECT_SOURCE_DIR}/include/VX
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development FILES_MATCHING PATTERN *.h)
include(OrvaneDocuments)

# Where the loader looks anyway, a path of our own would only get in the way of the system's.
if(NOT CMAKE_INSTALL_FULL_LIBDIR IN_LIST CMAKE_CXX_IMPLICIT_LINK_DIRECTORIES)
  file(RELATIVE_PATH from_bin_to_lib ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set_target_properties(bq vx PROPERTIES INSTALL_RPATH "$ORIGIN")
  foreach(tool IN LISTS tools)
    set_target_properties(${tool} PROPERTIES INSTALL_RPATH "$ORIGIN/${from_bin_to_lib}")
  endforeach()
endif()

# CMake package

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Orvane)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/OrvaneConfig.cmake.in
                              ${PROJECT_BINARY_DIR}/OrvaneConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/OrvaneConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(EXPORT OrvaneTargets NAMESPACE Orvane:: DESTINATION ${package_dir} COMPONENT development)
install(FILES ${PROJECT_BINARY_DIR}/OrvaneConfig.cmake ${PROJECT_BINARY_DIR}/OrvaneConfigVersion.cmake
        DESTINATION ${package_dir} COMPONENT development)

# pkg-config

file(RELATIVE_PATH up_to_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" up_to_prefix ${up_to_prefix})
# A folder that was given as an absolute path stays one.
set(pc_libdir "\${prefix}")
cmake_path(APPEND pc_libdir ${CMAKE_INSTALL_LIBDIR})
set(pc_includedir "\${prefix}")
cmake_path(APPEND pc_includedir ${CMAKE_INSTALL_INCLUDEDIR})
# One kind of library is installed. What static ones stand on is linked by every user of theirs, not only
# by one who wants everything static (pkg-config --static), so that none of it is private.
set(pc_requires)
set(pc_libs)
if(NOT BUILD_SHARED_LIBS)
  set(pc_requires "expat, libcurl")
  set(pc_libs ${CMAKE_CXX_IMPLICIT_LINK_LIBRARIES})
  list(FILTER pc_libs INCLUDE REGEX "^(stdc\\+\\+|c\\+\\+|m)$")
  list(REMOVE_DUPLICATES pc_libs)
  list(TRANSFORM pc_libs PREPEND -l)
  list(JOIN pc_libs " " pc_libs)
  string(APPEND pc_libs " ${CMAKE_THREAD_LIBS_INIT}")
endif()
foreach(module orvane orvane-bq)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/${module}.pc.in ${PROJECT_BINARY_DIR}/${module}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${module}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
          COMPONENT development)
endforeach()

# Tools, each with its manual page and its completions

function(install_if_there file)
  if(EXISTS ${file})
    install(FILES ${file} COMPONENT tools ${ARGN})
  endif()
endfunction()

foreach(tool IN LISTS tools)
  install(TARGETS ${tool} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
  install_if_there(${PROJECT_SOURCE_DIR}/packaging/man/${tool}.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  install_if_there(${PROJECT_SOURCE_DIR}/packaging/completion/${tool}.bash
                   DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME ${tool})
  install_if_there(${PROJECT_SOURCE_DIR}/packaging/completion/_${tool}
                   DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
endforeach()

# The way back

if(PROJECT_IS_TOP_LEVEL)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/Uninstall.cmake.in ${PROJECT_BINARY_DIR}/Uninstall.cmake @ONLY)
  add_custom_target(uninstall COMMAND ${CMAKE_COMMAND} -P ${PROJECT_BINARY_DIR}/Uninstall.cmake)
endif()
