# 64-bit ARM.
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(ZORVAN_TRIPLET aarch64-linux-gnu)
set(ZORVAN_QEMU qemu-aarch64)
include(${CMAKE_CURRENT_LIST_DIR}/arm-cross.cmake)
