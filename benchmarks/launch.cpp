// Writes the CPU time used so far to a file, then executes another program. The cost of fork()
// grows with the size of the measuring process and must not be counted for that program.
//
// Usage: morvane-launch FILE PROGRAM [ARGUMENT...]
// FILE then contains the nanoseconds.

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
