# Finds the MPFR library and defines the target MPFR::MPFR.

find_package(GMP)
find_path(MPFR_INCLUDE_DIR mpfr.h)
find_library(MPFR_LIBRARY mpfr)
mark_as_advanced(MPFR_INCLUDE_DIR MPFR_LIBRARY)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(MPFR REQUIRED_VARS MPFR_LIBRARY MPFR_INCLUDE_DIR GMP_FOUND)

if(MPFR_FOUND AND NOT TARGET MPFR::MPFR)
  add_library(MPFR::MPFR UNKNOWN IMPORTED)
  set_target_properties(MPFR::MPFR PROPERTIES
    IMPORTED_LOCATION "${MPFR_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${MPFR_INCLUDE_DIR}"
    INTERFACE_LINK_LIBRARIES GMP::GMP)
endif()
