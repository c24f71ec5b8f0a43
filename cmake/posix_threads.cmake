# For a folder of programs that need std::thread, which GCC 12 has only with its POSIX threads. The same compiler, C
# runtime and C++ library otherwise, so the module's static libraries are linked as they are: nothing in them is a
# thread or a lock of the C++ library (a test looks). What is built here carries a thread library whose start-up code
# installs an exception handler for the whole process: nothing of the module may be built in such a folder.
find_program(POSIX_C_COMPILER x86_64-w64-mingw32-gcc-posix REQUIRED)
find_program(POSIX_CXX_COMPILER x86_64-w64-mingw32-g++-posix REQUIRED)
set(CMAKE_C_COMPILER ${POSIX_C_COMPILER})
set(CMAKE_CXX_COMPILER ${POSIX_CXX_COMPILER})
