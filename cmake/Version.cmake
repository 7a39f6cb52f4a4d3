# The version stands in project() of the top CMakeLists.txt. From there it goes into the programs, by the
# header version.h of the target varno_version, and into the files that are made here.

configure_file("${PROJECT_SOURCE_DIR}/cmake/version.h.in"
  "${PROJECT_BINARY_DIR}/generated/version.h" @ONLY)
add_library(varno_version INTERFACE)
target_include_directories(varno_version INTERFACE "${PROJECT_BINARY_DIR}/generated")

# varno_man_page(FILE): installs man/FILE.in, with the version in the place of @PROJECT_VERSION@, as a
# compressed page.
function(varno_man_page name)
  configure_file("${PROJECT_SOURCE_DIR}/man/${name}.in" "${PROJECT_BINARY_DIR}/man/${name}" @ONLY)
  string(REGEX MATCH "[0-9]$" section "${name}")
  install_compressed("${PROJECT_BINARY_DIR}/man/${name}" "${CMAKE_INSTALL_MANDIR}/man${section}")
endfunction()
