# Rooms: a folder of sources is a target of its own, and lists the neighbours that it uses.

# varno_room(SOURCES file... [USES room...] [PRIVATE_USES room...] [LINKS target...])
#
# Makes the current folder a room. A room is named by its path below src/ (varno/expr), or below the
# root of the tree where it does not stand in src/ (tests/support); its target has dots in place of
# the slashes (varno.expr).
#
#   USES           rooms whose headers the room's own headers include
#   PRIVATE_USES   rooms whose headers only its sources include, and headers for these
#   LINKS          other targets that it needs
#
# What a room does not list it cannot include: a header is spelled by the path of its room, as in
# "varno/expr/expr.h", and that path is found in a folder of the build tree which holds nothing but a
# link to the room and comes with its target. Headers that reach a room through the headers of a
# neighbour it could include, too; tools/check_rooms.py, a part of ./dev lint, allows only what is
# listed. It reads rooms.txt of the build tree, with a line for each room:
#
#   FOLDER ROOM: ROOM... ; ROOM...       behind the semicolon the rooms of PRIVATE_USES
function(varno_room)
  cmake_parse_arguments(PARSE_ARGV 0 room "" "" "SOURCES;USES;PRIVATE_USES;LINKS")
  if(room_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "varno_room: unexpected ${room_UNPARSED_ARGUMENTS}")
  endif()
  varno_room_of_folder(name "${CMAKE_CURRENT_SOURCE_DIR}")
  varno_room_targets(target ${name})
  varno_room_targets(uses ${room_USES})
  varno_room_targets(private_uses ${room_PRIVATE_USES})

  set(view "${PROJECT_BINARY_DIR}/rooms/${name}")
  cmake_path(GET name PARENT_PATH parent)
  file(MAKE_DIRECTORY "${view}/${parent}")
  file(CREATE_LINK "${CMAKE_CURRENT_SOURCE_DIR}" "${view}/${name}" SYMBOLIC)

  list(JOIN room_USES " " listed)
  list(JOIN room_PRIVATE_USES " " private_listed)
  file(RELATIVE_PATH folder "${PROJECT_SOURCE_DIR}" "${CMAKE_CURRENT_SOURCE_DIR}")
  set_property(GLOBAL APPEND_STRING PROPERTY VARNO_ROOMS
    "${folder} ${name}: ${listed} ; ${private_listed}\n")

  add_library(${target} STATIC ${room_SOURCES})
  target_include_directories(${target} PUBLIC "${view}")
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

# varno_write_rooms(): leaves the list of all rooms in rooms.txt of the build tree.
function(varno_write_rooms)
  get_property(rooms GLOBAL PROPERTY VARNO_ROOMS)
  file(CONFIGURE OUTPUT "${PROJECT_BINARY_DIR}/rooms.txt" CONTENT "${rooms}")
endfunction()
