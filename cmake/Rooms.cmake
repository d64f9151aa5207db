# A room is one folder of sources, built as one object library. Rooms name the rooms that they build on, and
# the arrows point one way only: a test or a shared library links the objects of the rooms it names and of all
# rooms below them.

# fenlight_room(NAME FOLDER [USES room ...] [LIBS target ...])
# Files with the suffix _sse4, _avx2 or _avx512 get the flags of that instruction set, and no other file does:
# what runs on every machine must not contain an instruction that only some machines have. GCC 12 takes the
# undefined vectors of its own AVX-512 header for a mistake.
function(fenlight_room NAME FOLDER)
  cmake_parse_arguments(ROOM "" "" "USES;LIBS" ${ARGN})
  file(GLOB SOURCES CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/${FOLDER}/*.cpp)
  if(NOT SOURCES)
    return()
  endif()
  add_library(${NAME} OBJECT ${SOURCES})
  target_include_directories(${NAME} PUBLIC ${CMAKE_SOURCE_DIR}/include ${CMAKE_SOURCE_DIR}/src)
  target_compile_definitions(${NAME} PRIVATE FENLIGHT_BUILDING=1)
  target_link_libraries(${NAME} PRIVATE fenlight_warnings PUBLIC ${ROOM_LIBS} Threads::Threads)
  set_target_properties(${NAME} PROPERTIES POSITION_INDEPENDENT_CODE ON ROOM_USES "${ROOM_USES}" ROOM_LIBS "${ROOM_LIBS}")
  if(FENLIGHT_X86)
    foreach(SOURCE ${SOURCES})
      if(SOURCE MATCHES "_sse4\\.cpp$")
        set_source_files_properties(${SOURCE} PROPERTIES COMPILE_OPTIONS "-msse4.2;-mpopcnt")
      elseif(SOURCE MATCHES "_avx2\\.cpp$")
        set_source_files_properties(${SOURCE} PROPERTIES COMPILE_OPTIONS "-mavx2;-mbmi;-mbmi2;-mpopcnt;-mlzcnt")
      elseif(SOURCE MATCHES "_avx512\\.cpp$")
        set_source_files_properties(${SOURCE} PROPERTIES COMPILE_OPTIONS
          "-mavx2;-mbmi;-mbmi2;-mpopcnt;-mlzcnt;-mavx512f;-mavx512bw;-mavx512dq;-mavx512vl;-mavx512vbmi;$<$<CXX_COMPILER_ID:GNU>:-Wno-uninitialized;-Wno-maybe-uninitialized>")
      endif()
    endforeach()
  endif()
endfunction()

# The rooms of the list and all that they build on, each once.
function(fenlight_rooms_below RESULT)
  set(OPEN ${ARGN})
  set(ALL)
  while(OPEN)
    list(POP_FRONT OPEN ROOM)
    if(TARGET ${ROOM} AND NOT ROOM IN_LIST ALL)
      list(APPEND ALL ${ROOM})
      get_target_property(USES ${ROOM} ROOM_USES)
      if(USES)
        list(APPEND OPEN ${USES})
      endif()
    endif()
  endwhile()
  set(${RESULT} ${ALL} PARENT_SCOPE)
endfunction()

function(fenlight_link_rooms TARGET)
  fenlight_rooms_below(ROOMS ${ARGN})
  target_link_libraries(${TARGET} PRIVATE ${ROOMS} fenlight_warnings)
  target_compile_definitions(${TARGET} PRIVATE FENLIGHT_BUILDING=1)
endfunction()

# fenlight_test(NAME FOLDER room ...): one GoogleTest program of all *_test.cpp in tests/FOLDER, linked to the
# objects of the rooms, so that internals can be stepped. tests/support serves all of them.
function(fenlight_test NAME FOLDER)
  file(GLOB SOURCES CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/tests/${FOLDER}/*.cpp)
  if(NOT SOURCES OR NOT FENLIGHT_TESTS)
    return()
  endif()
  add_executable(${NAME} ${SOURCES})
  target_include_directories(${NAME} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
  target_compile_definitions(${NAME} PRIVATE FENLIGHT_TEST_DATA="${CMAKE_SOURCE_DIR}/tests/data"
    FENLIGHT_TEST_OUTPUT="${CMAKE_BINARY_DIR}/test-output")
  if(TARGET test_support)
    target_link_libraries(${NAME} PRIVATE test_support)
  endif()
  fenlight_link_rooms(${NAME} ${ARGN})
  target_link_libraries(${NAME} PRIVATE GTest::gtest GTest::gmock GTest::gtest_main)
  # A run-time directory of its own: the frame semaphore is one object for all processes of a user.
  add_test(NAME ${NAME} COMMAND ${CMAKE_COMMAND} -DPROGRAM=$<TARGET_FILE:${NAME}> -DNAME=${NAME}
    -DOUTPUT=${CMAKE_BINARY_DIR}/test-output -P ${CMAKE_SOURCE_DIR}/cmake/RunTest.cmake)
  set_tests_properties(${NAME} PROPERTIES TIMEOUT 600 LABELS unit)
endfunction()

# fenlight_bench(NAME FILE room ...): one Google Benchmark program; peers are defined where they are installed.
function(fenlight_bench NAME)
  if(NOT FENLIGHT_BENCHMARKS OR NOT EXISTS ${CMAKE_SOURCE_DIR}/bench/${NAME}.cpp)
    return()
  endif()
  add_executable(${NAME} ${CMAKE_SOURCE_DIR}/bench/${NAME}.cpp)
  fenlight_link_rooms(${NAME} ${ARGN})
  target_link_libraries(${NAME} PRIVATE benchmark::benchmark benchmark::benchmark_main ${FENLIGHT_BENCH_PEERS})
  target_compile_definitions(${NAME} PRIVATE ${FENLIGHT_BENCH_DEFINITIONS})
endfunction()

if(FENLIGHT_TESTS)
  file(GLOB SUPPORT CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/tests/support/*.cpp)
  add_library(test_support STATIC ${SUPPORT})
  target_include_directories(test_support PUBLIC ${CMAKE_SOURCE_DIR}/tests)
  target_compile_definitions(test_support PUBLIC FENLIGHT_TEST_OUTPUT="${CMAKE_BINARY_DIR}/test-output")
  target_link_libraries(test_support PUBLIC GTest::gtest PRIVATE fenlight_warnings)
endif()
