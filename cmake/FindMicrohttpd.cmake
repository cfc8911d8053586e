# Finds libmicrohttpd: Microhttpd_FOUND and the target Microhttpd::Microhttpd.
find_path(Microhttpd_INCLUDE_DIR microhttpd.h)
find_library(Microhttpd_LIBRARY microhttpd)
mark_as_advanced(Microhttpd_INCLUDE_DIR Microhttpd_LIBRARY)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Microhttpd REQUIRED_VARS Microhttpd_LIBRARY Microhttpd_INCLUDE_DIR)

if(Microhttpd_FOUND AND NOT TARGET Microhttpd::Microhttpd)
  add_library(Microhttpd::Microhttpd UNKNOWN IMPORTED)
  set_target_properties(Microhttpd::Microhttpd PROPERTIES
    IMPORTED_LOCATION ${Microhttpd_LIBRARY} INTERFACE_INCLUDE_DIRECTORIES ${Microhttpd_INCLUDE_DIR})
endif()
