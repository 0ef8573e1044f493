#include "support/file_descriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace morvane_test {

void FileDescriptor::Close() noexcept {
    if (number_ >= 0) close(std::exchange(number_, -1));
}

int Checked(int result, const char* what) {
    if (result < 0) throw std::system_error(errno, std::generic_category(), what);
    return result;
}

Pipe MakePipe(int flags) {
    int ends[2] = {-1, -1};
    Checked(pipe2(ends, O_CLOEXEC | flags), "pipe2");
    return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

}  // namespace morvane_test
