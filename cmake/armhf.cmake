# 32-bit ARM, hard float.
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(ZORVAN_TRIPLET arm-linux-gnueabihf)
set(ZORVAN_QEMU qemu-arm)
include(${CMAKE_CURRENT_LIST_DIR}/arm-cross.cmake)
