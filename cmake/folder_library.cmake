# folder_library(SOURCE...): the library of the folder that calls this, under the folder's name. Where
# several sources are compiled as one (CMAKE_UNITY_BUILD), they are those of one sub-folder.
function(folder_library)
  cmake_path(GET CMAKE_CURRENT_SOURCE_DIR FILENAME name)
  add_library(${name} STATIC ${ARGN})
  target_include_directories(${name} PUBLIC ${CMAKE_SOURCE_DIR})
  set_target_properties(${name} PROPERTIES UNITY_BUILD_MODE GROUP)
  foreach(source IN LISTS ARGN)
    cmake_path(GET source PARENT_PATH group)
    string(REPLACE "/" "_" group "${name}/${group}")
    set_property(SOURCE ${source} PROPERTY UNITY_GROUP ${group})
  endforeach()
endfunction()
