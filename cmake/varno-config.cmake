# find_package(varno) of other projects: defines the target varno::solve, the library of varno-solve.

include(CMakeFindDependencyMacro)

# The modules that find GMP, MPFR and MPFI stand beside this file.
list(PREPEND CMAKE_MODULE_PATH "${CMAKE_CURRENT_LIST_DIR}")
find_dependency(MPFI)
list(POP_FRONT CMAKE_MODULE_PATH)

include("${CMAKE_CURRENT_LIST_DIR}/varno-targets.cmake")
