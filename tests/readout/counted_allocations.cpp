// A counting heap. Under AddressSanitizer, whose heap cannot be replaced, its hook counts.
#include "tests/readout/counted_allocations.hpp"

#include <cerrno>
#include <cstddef>

namespace
{

uint64_t allocations = 0;

} // namespace

uint64_t allocations_so_far()
{
    return allocations;
}

#ifdef STM_SANITIZED

// Not every compiler brings the header for this.
extern "C" int __sanitizer_install_malloc_and_free_hooks(
    void (*on_malloc)(const volatile void *block, size_t size),
    void (*on_free)(const volatile void *block));

namespace
{

const int hooks_are_set = __sanitizer_install_malloc_and_free_hooks(
    [](const volatile void *, size_t) { ++allocations; }, [](const volatile void *) {});

} // namespace

#else

extern "C" {

void *__libc_malloc(size_t size);
void *__libc_calloc(size_t count, size_t size);
void *__libc_realloc(void *block, size_t size);
void *__libc_memalign(size_t alignment, size_t size);

void *malloc(size_t size)
{
    ++allocations;
    return __libc_malloc(size);
}

void *calloc(size_t count, size_t size)
{
    ++allocations;
    return __libc_calloc(count, size);
}

void *realloc(void *block, size_t size)
{
    ++allocations;
    return __libc_realloc(block, size);
}

void *memalign(size_t alignment, size_t size)
{
    ++allocations;
    return __libc_memalign(alignment, size);
}

void *aligned_alloc(size_t alignment, size_t size)
{
    return memalign(alignment, size);
}

int posix_memalign(void **block, size_t alignment, size_t size)
{
    *block = memalign(alignment, size);
    return *block == nullptr ? ENOMEM : 0;
}

} // extern "C"

#endif
