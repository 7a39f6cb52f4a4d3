# install_compressed(FILE DESTINATION [COMPONENT]): installs a file, named by its full path, as NAME.gz; it
# belongs to the component program if no other is named.
function(install_compressed file destination)
  set(component program ${ARGN})
  list(GET component -1 component)
  cmake_path(GET file FILENAME name)
  set(compressed "${PROJECT_BINARY_DIR}/compressed/${name}.gz")
  file(MAKE_DIRECTORY "${PROJECT_BINARY_DIR}/compressed")
  file(ARCHIVE_CREATE OUTPUT "${compressed}" PATHS "${file}"
    FORMAT raw COMPRESSION GZip COMPRESSION_LEVEL 9)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${file}")
  install(FILES "${compressed}" DESTINATION "${destination}" COMPONENT ${component})
endfunction()
