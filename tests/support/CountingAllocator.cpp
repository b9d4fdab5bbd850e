#include "tests/support/CountingAllocator.h"

#include <cstddef>
#include <malloc.h>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define COUNT_BY_SANITIZER_HOOKS
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define COUNT_BY_SANITIZER_HOOKS
#endif
#endif

namespace {
// Plain thread-locals of the executable: reading them never allocates, so the allocator may touch them.
thread_local std::uint64_t s_count = 0;
thread_local std::uint64_t s_bytes = 0;
thread_local std::int64_t s_liveBytes = 0;

void noteAllocation(std::size_t asked, std::size_t got)
{
    ++s_count;
    s_bytes += asked;
    s_liveBytes += static_cast<std::int64_t>(got);
}

void noteFree(std::size_t got)
{
    s_liveBytes -= static_cast<std::int64_t>(got);
}
} // namespace

#ifdef COUNT_BY_SANITIZER_HOOKS

// Part of every sanitizer's runtime, but g++ installs no header that declares them.
extern "C" {
int __sanitizer_install_malloc_and_free_hooks(void (*allocated)(const volatile void*, std::size_t),
                                              void (*frees)(const volatile void*));
std::size_t __sanitizer_get_allocated_size(const volatile void*);
}

namespace {
void sanitizerAllocated(const volatile void*, std::size_t size)
{
    noteAllocation(size, size);
}

void sanitizerFrees(const volatile void* block)
{
    noteFree(__sanitizer_get_allocated_size(block));
}

[[maybe_unused]] const int s_installed =
    __sanitizer_install_malloc_and_free_hooks(sanitizerAllocated, sanitizerFrees);
} // namespace

#else

// The executable's definitions win over the C library's for every shared library in the process.
extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);
void __libc_free(void*);

__attribute__((visibility("default"))) void* malloc(std::size_t size) noexcept
{
    void* block = __libc_malloc(size);
    if (block)
        noteAllocation(size, malloc_usable_size(block));
    return block;
}

__attribute__((visibility("default"))) void* calloc(std::size_t count, std::size_t size) noexcept
{
    void* block = __libc_calloc(count, size);
    if (block)
        noteAllocation(count * size, malloc_usable_size(block));
    return block;
}

__attribute__((visibility("default"))) void* realloc(void* old, std::size_t size) noexcept
{
    const std::size_t before = old ? malloc_usable_size(old) : 0;
    void* block = __libc_realloc(old, size);
    if (block || size == 0)
        noteFree(before);
    if (block)
        noteAllocation(size, malloc_usable_size(block));
    return block;
}

__attribute__((visibility("default"))) void* memalign(std::size_t alignment, std::size_t size) noexcept
{
    void* block = __libc_memalign(alignment, size);
    if (block)
        noteAllocation(size, malloc_usable_size(block));
    return block;
}

__attribute__((visibility("default"))) void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept
{
    return memalign(alignment, size);
}

__attribute__((visibility("default"))) int posix_memalign(void** out, std::size_t alignment,
                                                          std::size_t size) noexcept
{
    constexpr int outOfMemory = 12; // ENOMEM
    void* block = memalign(alignment, size);
    if (!block)
        return outOfMemory;
    *out = block;
    return 0;
}

__attribute__((visibility("default"))) void free(void* block) noexcept
{
    if (block)
        noteFree(malloc_usable_size(block));
    __libc_free(block);
}
}

#endif

namespace TestSupport {
AllocationCount::AllocationCount()
    : m_count(s_count)
    , m_bytes(s_bytes)
    , m_liveBytes(s_liveBytes)
{
}

std::uint64_t AllocationCount::count() const
{
    return s_count - m_count;
}

std::uint64_t AllocationCount::bytes() const
{
    return s_bytes - m_bytes;
}

std::int64_t AllocationCount::liveBytes() const
{
    return s_liveBytes - m_liveBytes;
}
} // namespace TestSupport
