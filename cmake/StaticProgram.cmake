# Programs linked with nothing but archives: they start sooner.

# varno_number_library(NAME LIBRARY ARCHIVE...): the target NAME stands for the imported target LIBRARY,
# and in programs of varno_static_program() for its archive and those that it needs, in their order.
function(varno_number_library name library)
  get_target_property(folders ${library} INTERFACE_INCLUDE_DIRECTORIES)
  set(archives "")
  foreach(archive IN LISTS ARGN)
    find_library(VARNO_ARCHIVE_${archive} lib${archive}.a)
    mark_as_advanced(VARNO_ARCHIVE_${archive})
    list(APPEND archives "${VARNO_ARCHIVE_${archive}}")
  endforeach()
  add_library(${name} INTERFACE)
  target_include_directories(${name} SYSTEM INTERFACE ${folders})
  set(is_static "$<BOOL:$<TARGET_PROPERTY:VARNO_LINKS_ARCHIVES>>")
  target_link_libraries(${name} INTERFACE "$<IF:${is_static},${archives},${library}>")
endfunction()

# varno_static_program(TARGET): links a program with archives alone where there are those of the numbers,
# of C and of C++; else with those of C++ alone.
function(varno_static_program target)
  include(CheckCXXSourceCompiles)
  set(CMAKE_REQUIRED_LINK_OPTIONS -static)
  check_cxx_source_compiles("#include <cmath>\n#include <thread>
    int main(int count, char**) { std::thread([count] { std::exp(count); }).join(); }"
    VARNO_HAS_ARCHIVES_OF_CXX)
  if(VARNO_HAS_ARCHIVES_OF_CXX AND VARNO_ARCHIVE_gmp AND VARNO_ARCHIVE_gmpxx AND VARNO_ARCHIVE_mpfr
      AND VARNO_ARCHIVE_mpfi)
    set_target_properties(${target} PROPERTIES VARNO_LINKS_ARCHIVES ON)
    target_link_options(${target} PRIVATE -static)
  else()
    target_link_options(${target} PRIVATE -static-libstdc++ -static-libgcc)
  endif()
endfunction()
