# The test program with embedded resources, and a module for it to load at run time with one of the same name.
include(${CMAKE_SOURCE_DIR}/cmake/FenlightResources.cmake)
set(HERE ${CMAKE_CURRENT_LIST_DIR})
fenlight_add_resources(system_test Image "Figure 1/ä" ${HERE}/program.bin 101 ${HERE}/module.bin empty ${HERE}/empty.bin)
fenlight_add_resources(system_test 2 "#007" ${HERE}/program.bin)

add_library(resource_module MODULE)
fenlight_add_resources(resource_module IMAGE "FIGURE 1/ä" ${HERE}/module.bin "of the \"module\"" ${HERE}/program.bin)
# What the module depends on has a resource too, which is not the module's.
add_library(resource_library SHARED)
fenlight_add_resources(resource_library IMAGE below ${HERE}/program.bin)
target_link_libraries(resource_module PRIVATE resource_library)
target_link_options(resource_module PRIVATE LINKER:--no-as-needed)
add_dependencies(system_test resource_module)
target_compile_definitions(system_test PRIVATE FENLIGHT_RESOURCE_MODULE="$<TARGET_FILE:resource_module>"
  FENLIGHT_RESOURCE_FILES="${HERE}")
