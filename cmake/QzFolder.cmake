# A folder of the library is one object library, compiled once; the components are made of these objects, and a
# folder's tests link the folder and what stands above it in the house, nothing below.

# qz_folder(system/cli): the sources of qz/system/cli as the object library qz_system_cli.
function(qz_folder folder)
  string(REPLACE "/" "_" target "qz_${folder}")
  file(GLOB sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/qz/${folder}/*.cpp")
  if(NOT sources)
    return()
  endif()
  add_library(${target} OBJECT ${sources})
  target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}")
  target_link_libraries(${target} PRIVATE qz_warnings qz_hardening Threads::Threads ZLIB::ZLIB)
  set_property(GLOBAL APPEND PROPERTY QZ_FOLDERS ${folder})
endfunction()

# qz_folder_objects(out system/cli): the objects of that folder and of every folder above it.
function(qz_folder_objects out folder)
  get_property(folders GLOBAL PROPERTY QZ_FOLDERS)
  set(objects)
  foreach(each IN LISTS folders)
    string(REPLACE "/" "_" target "qz_${each}")
    list(APPEND objects $<TARGET_OBJECTS:${target}>)
    if(each STREQUAL folder)
      break()
    endif()
  endforeach()
  set(${out} ${objects} PARENT_SCOPE)
endfunction()
