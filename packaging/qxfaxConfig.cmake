# The send-fax user interface for find_package(qxfax): the imported library qxfax::qxfaxui, for MinGW, Microsoft's
# linker and LLVM's. The module itself goes beside the program or, in a driver, beside the driver's file.
if(NOT CMAKE_SIZEOF_VOID_P EQUAL 8)
  set(qxfax_FOUND FALSE)
  set(qxfax_NOT_FOUND_MESSAGE "qxfaxui.dll is a 64-bit module: it has nothing for 32-bit targets.")
  return()
endif()

if(NOT TARGET qxfax::qxfaxui)
  get_filename_component(qxfax_root "${CMAKE_CURRENT_LIST_DIR}/../../.." ABSOLUTE)
  add_library(qxfax::qxfaxui SHARED IMPORTED)
  set_target_properties(qxfax::qxfaxui PROPERTIES
    INTERFACE_INCLUDE_DIRECTORIES "${qxfax_root}/include"
    IMPORTED_LOCATION "${qxfax_root}/bin/qxfaxui.dll")
  if(MINGW)
    set_property(TARGET qxfax::qxfaxui PROPERTY IMPORTED_IMPLIB "${qxfax_root}/lib/libqxfaxui.dll.a")
  else()
    set_property(TARGET qxfax::qxfaxui PROPERTY IMPORTED_IMPLIB "${qxfax_root}/lib/qxfaxui.lib")
  endif()
  unset(qxfax_root)
endif()
