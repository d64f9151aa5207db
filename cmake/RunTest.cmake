# Runs one test program headless with a run-time directory of its own, so that tests of one user neither meet at
# the frame semaphore nor need a display or a sound card.
set(RUNTIME "${OUTPUT}/run-${NAME}")
file(MAKE_DIRECTORY "${RUNTIME}")
file(CHMOD "${RUNTIME}" PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
set(ENV{XDG_RUNTIME_DIR} "${RUNTIME}")
if(NOT DEFINED ENV{SDL_AUDIODRIVER})
  set(ENV{SDL_AUDIODRIVER} dummy)
endif()
unset(ENV{DISPLAY})
unset(ENV{WAYLAND_DISPLAY})
# Nothing but sanitizer builds reads these.
if("$ENV{LSAN_OPTIONS}" STREQUAL "")
  set(ENV{LSAN_OPTIONS} "suppressions=${CMAKE_CURRENT_LIST_DIR}/sanitizers/lsan.supp:print_suppressions=0")
endif()
# A second of rest at the end of each process adds up where a test starts many.
if("$ENV{TSAN_OPTIONS}" STREQUAL "")
  set(ENV{TSAN_OPTIONS} "atexit_sleep_ms=50")
endif()
execute_process(COMMAND "${PROGRAM}" RESULT_VARIABLE RESULT)
if(NOT RESULT EQUAL 0)
  message(FATAL_ERROR "${NAME} ended with ${RESULT}")
endif()
