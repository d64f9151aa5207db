# Files as resources inside a program or a module, found by FindResourceA and its family.

# fenlight_add_resources(TARGET TYPE NAME FILE [NAME FILE ...])
#
# TYPE and NAME are text, blind to case, or a number from 0 to 65535 ("101" and "#101" are the same). The type BITMAP
# is the number 2, which is what LoadBitmapA looks for. A relative FILE lies in the current source directory. The
# target is rebuilt when a file changes. Works for programs, shared libraries, modules, and for object and static
# libraries, whose resources then belong to what links them. The project needs C or C++.
#
#   fenlight_add_resources(game IMAGE figure art/figure.png 101 art/tree.png)
#
# A shared library whose version script hides everything has to keep fenlight_resource_* global.
function(fenlight_add_resources TARGET TYPE)
  if(NOT TARGET ${TARGET})
    message(FATAL_ERROR "fenlight_add_resources: ${TARGET} is no target")
  endif()
  if(NOT ARGN)
    message(FATAL_ERROR "fenlight_add_resources: no NAME and FILE given")
  endif()
  _fenlight_resource_language(EXTENSION)
  _fenlight_resource_code(TYPE_CODE "${TYPE}")
  set(ITEMS ${ARGN})
  while(ITEMS)
    list(POP_FRONT ITEMS NAME FILE)
    if(FILE STREQUAL "")
      message(FATAL_ERROR "fenlight_add_resources: no file for the name ${NAME}")
    endif()
    _fenlight_resource_code(NAME_CODE "${NAME}")
    get_filename_component(FILE "${FILE}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_SOURCE_DIR}")
    _fenlight_embed(${TARGET} "fenlight_resource_${TYPE_CODE}_${NAME_CODE}" "${FILE}" ${EXTENSION})
  endwhile()
endfunction()

# A source file with nothing but a top-level asm statement is legal C and C++, and spares the project a third language.
function(_fenlight_resource_language RESULT)
  get_property(LANGUAGES GLOBAL PROPERTY ENABLED_LANGUAGES)
  if(C IN_LIST LANGUAGES)
    set(${RESULT} c PARENT_SCOPE)
  elseif(CXX IN_LIST LANGUAGES)
    set(${RESULT} cpp PARENT_SCOPE)
  else()
    message(FATAL_ERROR "fenlight_add_resources: the project has neither C nor CXX enabled")
  endif()
endfunction()

# "n" and the hex digits of the upper-cased bytes, or "i" and the number.
function(_fenlight_resource_code RESULT TEXT)
  string(TOUPPER "${TEXT}" UPPER)
  if(UPPER STREQUAL "BITMAP")
    set(UPPER 2)
  endif()
  if(UPPER MATCHES "^#?0*([0-9]+)$")
    if(CMAKE_MATCH_1 GREATER 65535)
      message(FATAL_ERROR "fenlight_add_resources: ${TEXT} is above 65535")
    endif()
    set(${RESULT} "i${CMAKE_MATCH_1}" PARENT_SCOPE)
  elseif(UPPER STREQUAL "")
    message(FATAL_ERROR "fenlight_add_resources: an empty type or name")
  else()
    string(HEX "${UPPER}" DIGITS)
    set(${RESULT} "n${DIGITS}" PARENT_SCOPE)
  endif()
endfunction()

function(_fenlight_embed TARGET SYMBOL FILE EXTENSION)
  # Quoted twice: for the assembler, then for the compiler.
  string(REPLACE "\\" "\\\\" QUOTED "${FILE}")
  string(REPLACE "\"" "\\\"" QUOTED "${QUOTED}")
  string(REPLACE "\\" "\\\\" QUOTED "${QUOTED}")
  string(REPLACE "\"" "\\\"" QUOTED "${QUOTED}")
  string(SHA256 DIGEST "${SYMBOL}")
  string(SUBSTRING ${DIGEST} 0 16 DIGEST)
  set(SOURCE "${CMAKE_CURRENT_BINARY_DIR}/${TARGET}_resources/${DIGEST}.${EXTENSION}")
  string(CONCAT TEXT
    "/* Made by fenlight_add_resources. The header: the size in 8 bytes, 8 bytes of 0; the bytes behind it. */\n"
    "__asm__(\n"
    "    \".pushsection .rodata.${SYMBOL}, \\\"a\\\", %progbits\\n\"\n"
    "    \".balign 16\\n\"\n"
    "    \".globl ${SYMBOL}\\n\"\n"
    "    \".type ${SYMBOL}, %object\\n\"\n"
    "    \"${SYMBOL}:\\n\"\n"
    "    \".quad 2f - 1f, 0\\n\"\n"
    "    \"1: .incbin \\\"${QUOTED}\\\"\\n\"\n"
    "    \"2:\\n\"\n"
    "    \".size ${SYMBOL}, . - ${SYMBOL}\\n\"\n"
    "    \".popsection\\n\");\n")
  file(CONFIGURE OUTPUT "${SOURCE}" CONTENT "${TEXT}" @ONLY)
  # No link-time optimisation: it knows no symbols of asm statements, and would drop or lose them.
  set_source_files_properties("${SOURCE}" TARGET_DIRECTORY ${TARGET}
    PROPERTIES OBJECT_DEPENDS "${FILE}" COMPILE_OPTIONS -fno-lto)
  target_sources(${TARGET} PRIVATE "${SOURCE}")
  _fenlight_export_symbol(${TARGET} ${SYMBOL})
endfunction()

# A program keeps its symbols to itself unless told to export them; what is linked out of a static library must be
# asked for by name.
function(_fenlight_export_symbol TARGET SYMBOL)
  get_target_property(KIND ${TARGET} TYPE)
  set(EXPORT "LINKER:--export-dynamic-symbol=${SYMBOL}")
  if(KIND STREQUAL "STATIC_LIBRARY")
    target_link_options(${TARGET} INTERFACE "LINKER:--undefined=${SYMBOL}" "${EXPORT}")
  elseif(KIND STREQUAL "OBJECT_LIBRARY")
    target_link_options(${TARGET} INTERFACE "${EXPORT}")
  else()
    target_link_options(${TARGET} PRIVATE "${EXPORT}")
  endif()
endfunction()
