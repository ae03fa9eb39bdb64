# A room of the house: one folder of src/ as a library, seen by others through an include folder that holds it alone. A room is
# given the rooms that it may include; those that it is not given it cannot find, so that an arrow against the plan does not
# build. The folder is reached by a symbolic link in the build tree, so that its headers keep their path from src/.
#   room(LIBRARY FOLDER [USES room...] [SYSTEM library...] [EXCEPT source...])
function(room library folder)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "" "USES;SYSTEM;EXCEPT")
  set(view ${PROJECT_BINARY_DIR}/rooms/${library})
  cmake_path(GET folder PARENT_PATH above)
  file(MAKE_DIRECTORY ${view}/${above})
  file(CREATE_LINK ${PROJECT_SOURCE_DIR}/src/${folder} ${view}/${folder} SYMBOLIC)
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/${folder}/*.cpp)
  list(TRANSFORM arg_EXCEPT PREPEND ${PROJECT_SOURCE_DIR}/src/${folder}/)
  list(REMOVE_ITEM sources ${arg_EXCEPT})
  add_library(${library} STATIC ${sources})
  target_include_directories(${library} PUBLIC ${view})
  target_link_libraries(${library} PUBLIC ${arg_USES} PRIVATE ${arg_SYSTEM})
endfunction()
