# Builds with Debian's cross compiler for CROSS_TRIPLET, against the libraries of that machine in CROSS_SYSROOT, where
# scripts/check-portability puts them. Static, so that the programs need no loader of their machine where they run
# emulated; a static libhogweed leaves GMP to the program.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES CROSS_TRIPLET CROSS_SYSROOT)
set(CMAKE_SYSTEM_NAME Linux)
string(REGEX MATCH "^[^-]+" CMAKE_SYSTEM_PROCESSOR "${CROSS_TRIPLET}")
set(CMAKE_CXX_COMPILER "${CROSS_TRIPLET}-g++")
set(CMAKE_LIBRARY_ARCHITECTURE "${CROSS_TRIPLET}")
set(CMAKE_SYSROOT "${CROSS_SYSROOT}")
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
set(CMAKE_CXX_STANDARD_LIBRARIES -lgmp)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_SYSROOT_DIR} "${CROSS_SYSROOT}")
set(ENV{PKG_CONFIG_LIBDIR} "${CROSS_SYSROOT}/usr/lib/${CROSS_TRIPLET}/pkgconfig")
