# The two shared libraries, put together from the rooms, and what is installed with them.
#
# Names such as Frame, Random or Sleep are common in callers' programs. So each library binds its own calls to
# itself (-Bsymbolic), shows only what its version script lists, and stays loaded once loaded (-z nodelete), because
# threads of its own may still run when a caller unloads it.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(FENLIGHT_PLATFORM_ROOMS platform_system platform_raster platform_graphics platform_window platform_pictures
  platform_audio platform_net)
set(FENLIGHT_ROOMS frame png images fx fx_filters fx_smoothing fx_geometry fx_blends alpha painting data packing
  sound particles paths sprites input desktop internet)

function(fenlight_shared_library TARGET OUTPUT SCRIPT)
  set(OBJECTS)
  set(ROOMS)
  foreach(ROOM ${ARGN})
    if(TARGET ${ROOM})
      list(APPEND ROOMS ${ROOM})
    endif()
  endforeach()
  foreach(ROOM ${ROOMS})
    list(APPEND OBJECTS $<TARGET_OBJECTS:${ROOM}>)
  endforeach()
  add_library(${TARGET} SHARED ${OBJECTS})
  foreach(ROOM ${ROOMS})
    get_target_property(LIBS ${ROOM} ROOM_LIBS)
    if(LIBS)
      target_link_libraries(${TARGET} PRIVATE ${LIBS})
    endif()
  endforeach()
  target_link_libraries(${TARGET} PRIVATE Threads::Threads)
  target_link_options(${TARGET} PRIVATE LINKER:--version-script=${SCRIPT} LINKER:-Bsymbolic
    LINKER:--exclude-libs,ALL LINKER:-z,nodelete)
  if(NOT FENLIGHT_SANITIZE)
    target_link_options(${TARGET} PRIVATE LINKER:--no-undefined)
  endif()
  set_target_properties(${TARGET} PROPERTIES OUTPUT_NAME ${OUTPUT} VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR} LINK_DEPENDS ${SCRIPT} LINKER_LANGUAGE CXX)
  target_include_directories(${TARGET} INTERFACE $<BUILD_INTERFACE:${CMAKE_SOURCE_DIR}/include>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
endfunction()

# The list of what is exported is the library's promise; a test holds it against headers and library.
set(FENLIGHT_EXPORTS_LIST ${CMAKE_SOURCE_DIR}/cmake/exports.list)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${FENLIGHT_EXPORTS_LIST})
file(STRINGS ${FENLIGHT_EXPORTS_LIST} FENLIGHT_EXPORTS)
list(JOIN FENLIGHT_EXPORTS ";\n    " FENLIGHT_EXPORT_LINES)
file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/fenlight.map
  CONTENT "FENLIGHT_3 {\n  global:\n    @FENLIGHT_EXPORT_LINES@;\n  local: *;\n};\n" @ONLY)

fenlight_shared_library(fenlight-platform fenlight-platform ${CMAKE_SOURCE_DIR}/cmake/platform.map
  ${FENLIGHT_PLATFORM_ROOMS})
fenlight_shared_library(fenlight fenlight ${CMAKE_BINARY_DIR}/fenlight.map ${FENLIGHT_ROOMS})
target_link_libraries(fenlight PUBLIC fenlight-platform)
# Installed side by side, so that programs find both also outside the system's folders.
set_target_properties(fenlight PROPERTIES INSTALL_RPATH "$ORIGIN")

install(TARGETS fenlight fenlight-platform EXPORT FenlightTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ${CMAKE_SOURCE_DIR}/include/fenlight DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
set(FENLIGHT_CMAKE_FOLDER ${CMAKE_INSTALL_LIBDIR}/cmake/Fenlight)
install(EXPORT FenlightTargets NAMESPACE Fenlight:: DESTINATION ${FENLIGHT_CMAKE_FOLDER})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/FenlightConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES cmake/FenlightConfig.cmake cmake/FenlightResources.cmake
  ${CMAKE_BINARY_DIR}/FenlightConfigVersion.cmake DESTINATION ${FENLIGHT_CMAKE_FOLDER})
configure_file(cmake/fenlight.pc.in ${CMAKE_BINARY_DIR}/fenlight.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/fenlight.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
