# Writes the date of SOURCE_DATE_EPOCH as DriverVer of an INF wants it.
string(TIMESTAMP date "%m/%d/%Y" UTC)
execute_process(COMMAND ${CMAKE_COMMAND} -E echo ${date})
