# Finds the MPFI library and defines the target MPFI::MPFI.

find_package(MPFR)
find_path(MPFI_INCLUDE_DIR mpfi.h)
find_library(MPFI_LIBRARY mpfi)
mark_as_advanced(MPFI_INCLUDE_DIR MPFI_LIBRARY)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(MPFI REQUIRED_VARS MPFI_LIBRARY MPFI_INCLUDE_DIR MPFR_FOUND)

if(MPFI_FOUND AND NOT TARGET MPFI::MPFI)
  add_library(MPFI::MPFI UNKNOWN IMPORTED)
  set_target_properties(MPFI::MPFI PROPERTIES
    IMPORTED_LOCATION "${MPFI_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${MPFI_INCLUDE_DIR}"
    INTERFACE_LINK_LIBRARIES MPFR::MPFR)
endif()
