# VARNO_PYTHON: Debian's own Python where it is there. The packages that the tests and the module
# varno need are made for that one, whatever else stands first in PATH.

find_program(VARNO_PYTHON python3 HINTS /usr/bin)
mark_as_advanced(VARNO_PYTHON)
