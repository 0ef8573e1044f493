#include "support/exhaustible_memory.h"

#include <cstdlib>
#include <new>

namespace morvane_test {

std::atomic<bool> memory_is_exhausted{false};

}  // namespace morvane_test

void* operator new(std::size_t size) {
    void* const memory = morvane_test::memory_is_exhausted ? nullptr : std::malloc(size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

// Sanitizers have forms of their own of whatever is not replaced.
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return morvane_test::memory_is_exhausted ? nullptr : std::malloc(size);
}

// Inlined where operator new is not, they look to the compiler like the wrong way to release.
[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}
