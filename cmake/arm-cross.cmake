# Cross build for ARM with Debian's compilers; programs run under qemu-user. Included by a toolchain file that
# has set the processor, the compilers' prefix ZORVAN_TRIPLET and the emulator ZORVAN_QEMU.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_C_COMPILER ${ZORVAN_TRIPLET}-gcc)
set(CMAKE_CXX_COMPILER ${ZORVAN_TRIPLET}-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR ${ZORVAN_QEMU};-L;/usr/${ZORVAN_TRIPLET})
set(CMAKE_FIND_ROOT_PATH /usr/${ZORVAN_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
