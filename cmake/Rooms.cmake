# Rooms: a folder of sources is a target of its own, and lists the neighbours that it uses.

# varno_room(SOURCES file... [USES room...] [PRIVATE_USES room...] [LINKS target...])
#
# Makes the current folder a room. A room is named by its path below src/ (varno/expr), or below the
# root of the tree where it does not stand in src/ (tests/support); its target has dots in place of
# the slashes (varno.expr).
#
#   USES           rooms whose headers the room's own headers include
#   PRIVATE_USES   rooms whose headers only its sources include
#   LINKS          other targets that it needs
function(varno_room)
  cmake_parse_arguments(PARSE_ARGV 0 room "" "" "SOURCES;USES;PRIVATE_USES;LINKS")
  if(room_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "varno_room: unexpected ${room_UNPARSED_ARGUMENTS}")
  endif()
  varno_room_of_folder(name "${CMAKE_CURRENT_SOURCE_DIR}")
  varno_room_targets(target ${name})
  varno_room_targets(uses ${room_USES})
  varno_room_targets(private_uses ${room_PRIVATE_USES})

  add_library(${target} STATIC ${room_SOURCES})
  target_link_libraries(${target}
    PUBLIC varno_options ${uses} ${room_LINKS}
    PRIVATE varno_warnings ${private_uses})
endfunction()

# varno_room_of_folder(VARIABLE FOLDER): the name of the room that a folder is.
function(varno_room_of_folder variable folder)
  file(RELATIVE_PATH name "${PROJECT_SOURCE_DIR}" "${folder}")
  string(REGEX REPLACE "^src/" "" name "${name}")
  set(${variable} "${name}" PARENT_SCOPE)
endfunction()

# varno_room_targets(VARIABLE ROOM...): the targets of rooms, for target_link_libraries.
function(varno_room_targets variable)
  string(REPLACE "/" "." targets "${ARGN}")
  set(${variable} "${targets}" PARENT_SCOPE)
endfunction()
