cmake_minimum_required(VERSION 3.25)
# Fails when a source file includes a header of a folder that its library
# does not link. Run by ctest as
#   cmake -DSOURCE_DIR=<src> -DLAYERS=<file written at configure time> -P layers.cmake
# LAYERS sets KM_LAYER_FOLDERS (every folder of src/ that has a library or a
# program) and, for each folder F, KM_LAYER_ALLOWED_F: the folders F may
# include, which are F itself and the folders of everything it links.
include(${LAYERS})

file(GLOB folders RELATIVE ${SOURCE_DIR} ${SOURCE_DIR}/*)
set(failures "")
foreach(folder IN LISTS folders)
  if(NOT IS_DIRECTORY ${SOURCE_DIR}/${folder})
    continue()
  endif()
  if(NOT folder IN_LIST KM_LAYER_FOLDERS)
    string(APPEND failures "src/${folder}/ belongs to no library\n")
    continue()
  endif()
  file(GLOB_RECURSE files ${SOURCE_DIR}/${folder}/*.h ${SOURCE_DIR}/${folder}/*.cpp)
  foreach(file IN LISTS files)
    file(STRINGS ${file} includes REGEX "^[ \t]*#[ \t]*include[ \t]*\"[a-z]+/")
    foreach(line IN LISTS includes)
      string(REGEX REPLACE "^[ \t]*#[ \t]*include[ \t]*\"([a-z]+)/.*" "\\1" target "${line}")
      if(NOT target IN_LIST KM_LAYER_ALLOWED_${folder})
        file(RELATIVE_PATH rel ${SOURCE_DIR}/.. ${file})
        string(APPEND failures "${rel}: ${line} (${folder} does not link ${target})\n")
      endif()
    endforeach()
  endforeach()
endforeach()

if(failures)
  message(FATAL_ERROR "Includes that run against the layers:\n${failures}")
endif()
message(STATUS "Every include runs downward.")
