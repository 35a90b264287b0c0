# Protection of programs and libraries against faults that nobody has found yet. What the compiler does not
# have for the target is left out.
include(CheckCXXCompilerFlag)

set(zorvan_hardening_compile_flags)
set(zorvan_hardening_link_flags)
# Of files whose only arrays are of fixed sizes with indices that no input reaches, and which take most of the time:
# canaries are left out. They keep such arrays in memory and loops over them rolled (docs/testing.md has figures).
set(zorvan_arithmetic_flags)
# What the test of the binaries may expect of them.
set(zorvan_hardening_kinds)
if(NOT ZORVAN_HARDENING)
  return()
endif()

set(zorvan_hardening_link_flags LINKER:-z,relro LINKER:-z,now
  $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-pie>)
set(flags -fstack-protector-strong -fstack-clash-protection)
# Jumps and returns that go nowhere else. Compilers take the other machine's flag, too, and do nothing.
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|i.86|x86)$")
  list(APPEND flags -fcf-protection)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)")
  list(APPEND flags -mbranch-protection=standard)
endif()
set(zorvan_arithmetic_flags -fno-stack-protector)
foreach(flag IN LISTS flags)
  string(MAKE_C_IDENTIFIER "ZORVAN_HAS${flag}" has)
  check_cxx_compiler_flag(${flag} ${has})
  if(${has})
    list(APPEND zorvan_hardening_compile_flags ${flag})
  endif()
endforeach()
set(zorvan_hardening_kinds linked ${zorvan_hardening_compile_flags})
if(ZORVAN_HAS_fstack_clash_protection AND ZORVAN_HAS_fcf_protection AND NOT ZORVAN_SANITIZE)
  list(APPEND zorvan_hardening_kinds probed)
endif()

# The C library's checks need an optimising compiler, and would hide calls from the sanitizers. Compilers and
# users may have chosen another level before.
if(NOT ZORVAN_SANITIZE)
  set(optimised $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)
  list(APPEND zorvan_hardening_compile_flags "$<${optimised}:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=3>")
  list(APPEND zorvan_hardening_kinds $<${optimised}:fortified>)
endif()
