// A library to be preloaded: counts the allocations of the project's programs, and lets one of them fail.
//
// Counted are those that our own programs and libraries make, and libpng, libjpeg, FreeType and zlib; also
// through the C and the C++ library. Not those of GL drivers, window systems and the dynamic linker.
// The environment tells what to do:
//   ALLOCATION_LOG=FILE  writes the site of every counted allocation, 8 bytes each
//   ALLOCATION_FAILS=N   the Nth of them fails, from 0 on
#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <unistd.h>
#include <unwind.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace {

constexpr int kSiteFrames = 4;
constexpr int kMostFrames = 24;

enum class Owner { kOurs, kPasses, kOther };

struct Prefix {
    const char* name;
    Owner owner;
};
constexpr Prefix kLibraries[] = {
    {"libzorvan", Owner::kOurs},   {"libpng", Owner::kOurs},    {"libjpeg", Owner::kOurs},
    {"libfreetype", Owner::kOurs}, {"libz.so", Owner::kOurs},   {"libfailing_malloc", Owner::kPasses},
    {"libstdc++", Owner::kPasses}, {"libc.so", Owner::kPasses},
};

Owner OwnerOf(const dl_find_object& object) {
    const char* path = object.dlfo_link_map->l_name;
    if (*path == '\0') {
        return Owner::kOurs;  // the program itself
    }
    const char* slash = std::strrchr(path, '/');
    const char* name = slash != nullptr ? slash + 1 : path;
    for (const Prefix& library : kLibraries) {
        if (std::strncmp(name, library.name, std::strlen(library.name)) == 0) {
            return library.owner;
        }
    }
    return Owner::kOther;
}

// Addresses relative to their libraries, so that they are the same in every run.
struct Walk {
    std::uint64_t site = 0;
    int frames = 0;  // of the site, from the first of ours on
    int walked = 0;
    bool other = false;
};

_Unwind_Reason_Code Step(_Unwind_Context* context, void* data) {
    Walk& walk = *static_cast<Walk*>(data);
    const auto address = _Unwind_GetIP(context);
    dl_find_object object{};
    if (++walk.walked > kMostFrames || _dl_find_object(reinterpret_cast<void*>(address - 1), &object) != 0) {
        return _URC_END_OF_STACK;
    }
    const Owner owner = OwnerOf(object);
    if (walk.frames == 0 && owner != Owner::kOurs) {
        walk.other = owner == Owner::kOther;
        return walk.other ? _URC_END_OF_STACK : _URC_NO_REASON;
    }
    const auto offset = address - reinterpret_cast<std::uintptr_t>(object.dlfo_map_start);
    walk.site = (walk.site ^ offset) * 0x9E3779B97F4A7C15u;
    walk.site ^= walk.site >> 29;
    return ++walk.frames < kSiteFrames ? _URC_NO_REASON : _URC_END_OF_STACK;
}

struct Task {
    int log = -1;
    std::uint64_t failing = UINT64_MAX;
    bool active = false;

    Task() {
        if (const char* name = std::getenv("ALLOCATION_LOG")) {
            log = open(name, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
            active = true;
        }
        if (const char* number = std::getenv("ALLOCATION_FAILS")) {
            failing = std::strtoull(number, nullptr, 10);
            active = true;
        }
    }
};

std::atomic<bool> started{false};
std::atomic<std::uint64_t> count{0};
Task task;
// The program's own allocations come after those of the libraries' start.
struct Starter {
    Starter() { started = true; }
} starter;

bool Fails(const void* caller) {
    if (!started || !task.active) {
        return false;
    }
    dl_find_object object{};
    if (_dl_find_object(const_cast<void*>(caller), &object) != 0 || OwnerOf(object) == Owner::kOther) {
        return false;
    }
    Walk walk;
    _Unwind_Backtrace(Step, &walk);
    if (walk.frames == 0) {
        return false;
    }
    const std::uint64_t number = count++;
    if (task.log >= 0 && write(task.log, &walk.site, sizeof walk.site) < 0) {
        std::abort();
    }
    if (number == task.failing) {
        errno = ENOMEM;
        return true;
    }
    return false;
}

// As the C++ library's own, for a handler that throws.
void* New(std::size_t size, std::size_t alignment, const void* caller) {
    if (Fails(caller)) {
        if (const std::new_handler handler = std::get_new_handler()) {
            handler();
        }
        throw std::bad_alloc();
    }
    return alignment == 0 ? __libc_malloc(size) : __libc_memalign(alignment, size);
}

void* NewOrNull(std::size_t size, const void* caller) noexcept {
    try {
        return New(size, 0, caller);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

}  // namespace

#define CALLER __builtin_return_address(0)
#define ALLOCATES __attribute__((visibility("default")))

extern "C" {

ALLOCATES void* malloc(std::size_t size) {
    return Fails(CALLER) ? nullptr : __libc_malloc(size);
}
ALLOCATES void* calloc(std::size_t number, std::size_t size) {
    return Fails(CALLER) ? nullptr : __libc_calloc(number, size);
}
ALLOCATES void* realloc(void* memory, std::size_t size) {
    return size != 0 && Fails(CALLER) ? nullptr : __libc_realloc(memory, size);
}
ALLOCATES void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return Fails(CALLER) ? nullptr : __libc_memalign(alignment, size);
}
ALLOCATES int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
    *memory = Fails(CALLER) ? nullptr : __libc_memalign(alignment, size);
    return *memory != nullptr ? 0 : ENOMEM;
}

}  // extern "C"

ALLOCATES void* operator new(std::size_t size) {
    return New(size, 0, CALLER);
}
ALLOCATES void* operator new[](std::size_t size) {
    return New(size, 0, CALLER);
}
ALLOCATES void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return NewOrNull(size, CALLER);
}
ALLOCATES void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return NewOrNull(size, CALLER);
}
ALLOCATES void* operator new(std::size_t size, std::align_val_t alignment) {
    return New(size, static_cast<std::size_t>(alignment), CALLER);
}
ALLOCATES void* operator new[](std::size_t size, std::align_val_t alignment) {
    return New(size, static_cast<std::size_t>(alignment), CALLER);
}
