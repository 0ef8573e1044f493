// Becomes another program, and notes before that what processor time has been used already: to
// leave the measuring process is the dearer the larger that is, and not that program's doing.
//
// Usage: morvane-launch FILE PROGRAM [ARGUMENT...]
// FILE then holds the nanoseconds.

#include <unistd.h>

#include <cstdio>
#include <ctime>

int main(int argc, char** argv) {
    std::FILE* const file = argc > 2 ? std::fopen(argv[1], "w") : nullptr;
    timespec used = {};
    if (file == nullptr || clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used) != 0) return 127;
    std::fprintf(file, "%lld\n", used.tv_sec * 1000000000LL + used.tv_nsec);
    std::fclose(file);
    execvp(argv[2], argv + 2);
    return 127;
}
