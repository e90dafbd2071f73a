#pragma once
// Counts the heap allocations of a benchmark program: a replaced global operator new, and malloc,
// calloc and realloc wrapped in the executable, since Qt's strings allocate with malloc and never
// reach operator new. Include this in exactly one source file of each program.
#include <atomic>
#include <cstddef>
#include <new>

extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void __libc_free(void*);
}

namespace lumora::bench {

inline std::atomic<long long> heap_allocations{0};

inline long long allocations() {
    return heap_allocations.load(std::memory_order_relaxed);
}

inline void* counted(void* p) {
    heap_allocations.fetch_add(1, std::memory_order_relaxed);
    return p;
}

} // namespace lumora::bench

extern "C" {
void* malloc(std::size_t n) {
    return lumora::bench::counted(__libc_malloc(n));
}
void* calloc(std::size_t n, std::size_t size) {
    return lumora::bench::counted(__libc_calloc(n, size));
}
void* realloc(void* p, std::size_t n) {
    return lumora::bench::counted(__libc_realloc(p, n));
}
void free(void* p) {
    __libc_free(p);
}
}

void* operator new(std::size_t n) {
    if (void* p = __libc_malloc(n == 0 ? 1 : n)) return lumora::bench::counted(p);
    throw std::bad_alloc();
}
void* operator new[](std::size_t n) {
    return operator new(n);
}
void operator delete(void* p) noexcept {
    __libc_free(p);
}
void operator delete[](void* p) noexcept {
    __libc_free(p);
}
void operator delete(void* p, std::size_t) noexcept {
    __libc_free(p);
}
void operator delete[](void* p, std::size_t) noexcept {
    __libc_free(p);
}
