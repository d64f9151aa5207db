# fenlight_fuzzer(NAME room ...): the libFuzzer program fuzz/NAME.cpp over the rooms, where FENLIGHT_FUZZERS is on.
# Needs clang, and FENLIGHT_SANITIZE=fuzzer-no-link,address,undefined, which instruments the rooms; only the
# program itself is linked to the fuzzer's main loop. The preset `fuzz` sets both. Seeds lie in fuzz/corpus.
function(fenlight_fuzzer NAME)
  if(NOT FENLIGHT_FUZZERS OR NOT EXISTS ${CMAKE_SOURCE_DIR}/fuzz/${NAME}.cpp)
    return()
  endif()
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang" OR NOT FENLIGHT_SANITIZE MATCHES "fuzzer-no-link")
    message(FATAL_ERROR "Fuzzers need clang and FENLIGHT_SANITIZE=fuzzer-no-link,address,undefined")
  endif()
  add_executable(${NAME} ${CMAKE_SOURCE_DIR}/fuzz/${NAME}.cpp)
  fenlight_link_rooms(${NAME} ${ARGN})
  target_link_options(${NAME} PRIVATE -fsanitize=fuzzer)
endfunction()
