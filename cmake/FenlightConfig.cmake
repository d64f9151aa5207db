# find_package(Fenlight) gives the target Fenlight::fenlight and the function fenlight_add_resources.
include("${CMAKE_CURRENT_LIST_DIR}/FenlightTargets.cmake")
include("${CMAKE_CURRENT_LIST_DIR}/FenlightResources.cmake")
