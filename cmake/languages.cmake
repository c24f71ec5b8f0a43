# What the build makes of the list of languages: QX_LANGUAGES (those that have texts), QX_HELP_LANGUAGES (those that have
# help too, one per help file) and QX_HELP_CODE_<language>, and in QX_LANGUAGE_FOLDER the scripts for the string library
# and the rows that tests are compiled with.
set(QX_LANGUAGE_LIST ${PROJECT_SOURCE_DIR}/strings/languages.toml ${PROJECT_SOURCE_DIR}/strings/languages.py)
set(QX_LANGUAGE_FOLDER ${PROJECT_BINARY_DIR}/languages)

# A new file is a new language.
file(GLOB texts CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/strings/*.rc ${PROJECT_SOURCE_DIR}/help/*.toml)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${QX_LANGUAGE_LIST})
find_package(Python3 3.11 REQUIRED COMPONENTS Interpreter)
execute_process(
  COMMAND ${Python3_EXECUTABLE} ${PROJECT_SOURCE_DIR}/strings/languages.py build ${QX_LANGUAGE_FOLDER}
  COMMAND_ERROR_IS_FATAL ANY)
include(${QX_LANGUAGE_FOLDER}/languages.cmake)
