#include "Scarcity.h"

#include <cerrno>
#include <cstdlib>
#include <new>

#include <dlfcn.h>
#include <pthread.h>

#include "FileCalls.h"

#define SEEN_BY_THE_LIBRARY __attribute__((visibility("default")))

namespace td::test {
namespace {

// Constant: operator new is used before main() and after it.
constinit Shortage g_memory;
constinit Shortage g_threads;

void* allocate(std::size_t size) noexcept {
    return g_memory.strikes() ? nullptr : std::malloc(size == 0 ? 1 : size);
}

void* allocateOrThrow(std::size_t size) {
    void* const memory = allocate(size);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

} // namespace

void Shortage::begin(int number, bool forEver) {
    m_uses = 0;
    m_failing = number;
    m_forEver = forEver;
    m_struck = false;
    m_active = true;
}

bool Shortage::end() {
    m_active = false;
    return m_struck;
}

bool Shortage::strikes() {
    if (!m_active || Unwatched::isActive())
        return false;
    const int use = ++m_uses;
    const bool fails = use == m_failing || (m_forEver && use > m_failing);
    if (fails)
        m_struck = true;
    return fails;
}

Shortage& memoryShortage() {
    return g_memory;
}

Shortage& threadShortage() {
    return g_threads;
}

} // namespace td::test

SEEN_BY_THE_LIBRARY void* operator new(std::size_t size) {
    return td::test::allocateOrThrow(size);
}

SEEN_BY_THE_LIBRARY void* operator new[](std::size_t size) {
    return td::test::allocateOrThrow(size);
}

SEEN_BY_THE_LIBRARY void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return td::test::allocate(size);
}

SEEN_BY_THE_LIBRARY void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return td::test::allocate(size);
}

SEEN_BY_THE_LIBRARY void operator delete(void* memory) noexcept {
    std::free(memory);
}

SEEN_BY_THE_LIBRARY void operator delete[](void* memory) noexcept {
    std::free(memory);
}

SEEN_BY_THE_LIBRARY void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

SEEN_BY_THE_LIBRARY void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}

SEEN_BY_THE_LIBRARY void operator delete(void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}

SEEN_BY_THE_LIBRARY void operator delete[](void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}

extern "C" SEEN_BY_THE_LIBRARY int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                                                  void* (*start)(void*), void* argument) __THROWNL {
    static const auto real = reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
    return td::test::threadShortage().strikes() ? EAGAIN : real(thread, attributes, start, argument);
}
