# The Debian package. "./dev package" makes it.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "The varno developers <varno@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION math)
# What the programs are linked with, as dpkg-shlibdeps finds it: libgmp, libmpfr, libmpfi, libfmt and the usual
# libraries of C++.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS gnuplot)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
  "The Taylor series method with variable order and variable step, in
multiprecision arithmetic. The equations are written as on paper; the result
is a table with as many digits as wanted, or a picture by gnuplot. varno
shows the method at work; varno-solve gives rows whose digits a second run
has checked, and comes with a C++ library.")

include(CPack)
