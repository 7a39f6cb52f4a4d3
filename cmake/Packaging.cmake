# The Debian packages, one for each component. "./dev package" makes them.
#
#   varno                the programs, their pages and examples
#   libvarno-solve-dev   the library for C++
#   python3-varno        the Python module, where VARNO_BUILD_PYTHON is on
#   varno-solve-mpi      the program for MPI, where VARNO_BUILD_MPI is on

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "The varno developers <varno@localhost>")
set(CPACK_STRIP_FILES ON)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL program development)
if(VARNO_BUILD_PYTHON)
  list(APPEND CPACK_COMPONENTS_ALL python)
endif()
if(VARNO_BUILD_MPI)
  list(APPEND CPACK_COMPONENTS_ALL mpi)
endif()

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(description "The Taylor series method with variable order and variable step, in
multiprecision arithmetic. The equations are written as on paper; the result
is a table with as many digits as wanted, or a picture by gnuplot.")

# What varno is linked with, as dpkg-shlibdeps finds it: libgmp and the usual libraries of C and C++.
# varno-solve holds what it uses of its libraries, so that a new version of them asks for a new package.
set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME varno)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION math)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SUGGESTS "gnuplot, libvarno-solve-dev, python3-varno")
set(CPACK_COMPONENT_PROGRAM_DESCRIPTION "${description}
varno shows the method at work; varno-solve gives rows whose digits a second
run has checked.")

# An archive: what links it needs the libraries that it uses.
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libvarno-solve-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libgmp-dev, libmpfr-dev, libmpfi-dev")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "${description}
This is the library of varno-solve for C++: its header, an archive, and what
find_package of CMake needs.")

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-varno)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS ON)
set(CPACK_COMPONENT_PYTHON_DESCRIPTION "${description}
This is varno-solve as a Python module, with arrays of numpy and numbers of
mpmath.")
if(VARNO_BUILD_PYTHON)
  # The module is made for this version of Python.
  get_property(minor GLOBAL PROPERTY VARNO_PYTHON_MINOR)
  math(EXPR next "${minor} + 1")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
    "python3 (>= 3.${minor}), python3 (<< 3.${next}), python3-numpy, python3-mpmath")
endif()

set(CPACK_DEBIAN_MPI_PACKAGE_NAME varno-solve-mpi)
set(CPACK_DEBIAN_MPI_PACKAGE_SECTION math)
set(CPACK_DEBIAN_MPI_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_MPI_PACKAGE_DEPENDS openmpi-bin)
set(CPACK_COMPONENT_MPI_DESCRIPTION "${description}
This is varno-solve for mpirun: the runs of a sweep are spread over the ranks
of an MPI job, on one machine or many.")

# What Debian wants to find with every package
function(varno_package_documents component package)
  set(folder "${CMAKE_INSTALL_DATADIR}/doc/${package}")
  install(FILES "${PROJECT_SOURCE_DIR}/packaging/copyright"
    DESTINATION "${folder}" COMPONENT ${component})
  install_compressed("${PROJECT_SOURCE_DIR}/packaging/changelog" "${folder}" ${component})
  install(FILES "${PROJECT_SOURCE_DIR}/packaging/lintian-overrides" RENAME ${package}
    DESTINATION "${CMAKE_INSTALL_DATADIR}/lintian/overrides" COMPONENT ${component})
endfunction()

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} name)
  varno_package_documents(${component} ${CPACK_DEBIAN_${name}_PACKAGE_NAME})
endforeach()

include(CPack)
