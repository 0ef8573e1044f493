#include "unit/system_calls.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace morvane_test {

std::function<ssize_t(const void* bytes, std::size_t count)> write_substitute;
std::function<void(useconds_t microseconds)> sleep_substitute;
std::function<void(const char* name)> remove_substitute;

}  // namespace morvane_test

// Names required by the linker's --wrap.
extern "C" {

ssize_t __real_write(int descriptor, const void* bytes, std::size_t count);
ssize_t __wrap_write(int descriptor, const void* bytes, std::size_t count);
int __real_usleep(useconds_t microseconds);
int __wrap_usleep(useconds_t microseconds);

ssize_t __wrap_write(int descriptor, const void* bytes, std::size_t count) {
    if (descriptor == STDOUT_FILENO && morvane_test::write_substitute)
        return morvane_test::write_substitute(bytes, count);
    return __real_write(descriptor, bytes, count);
}

int __wrap_usleep(useconds_t microseconds) {
    if (!morvane_test::sleep_substitute) return __real_usleep(microseconds);
    morvane_test::sleep_substitute(microseconds);
    return 0;
}

// Replaces remove(3) of the C library; implements it if there is no substitute.
int remove(const char* name) noexcept {
    if (morvane_test::remove_substitute) {
        morvane_test::remove_substitute(name);
        return 0;
    }
    if (unlink(name) == 0) return 0;
    return errno == EISDIR ? rmdir(name) : -1;
}

}  // extern "C"

namespace morvane_test {

ssize_t RealWrite(const void* bytes, std::size_t count) {
    return __real_write(STDOUT_FILENO, bytes, count);
}

}  // namespace morvane_test
