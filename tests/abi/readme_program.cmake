# The README prints the first program whole; the copy must be the program.
file(READ ${README} TEXT)
file(READ ${PROGRAM} SOURCE)
string(STRIP "${SOURCE}" SOURCE)
string(FIND "${TEXT}" "```c\n${SOURCE}\n```" PLACE)
if(PLACE EQUAL -1)
  message(FATAL_ERROR "README.md does not print examples/first_sprite.c as it stands")
endif()
