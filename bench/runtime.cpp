// Runs a command (its standard output to /dev/null) and prints the wall
// time and the processor time (user and system) it took, in microseconds:
//   runtime COMMAND [ARGUMENT...]   ->   "WALL CPU"
// The processor time comes from wait4: on a machine that other work shares,
// it moves far less than the wall time, which includes the waits for a core.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: runtime COMMAND [ARGUMENT...]\n");
        return 2;
    }
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = fork();
    if (child < 0) return 1;
    if (child == 0) {
        const int null = open("/dev/null", O_WRONLY);
        if (null >= 0) dup2(null, 1);
        execvp(argv[1], argv + 1);
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    if (wait4(child, &status, 0, &usage) != child) return 1;
    const auto wall = std::chrono::duration_cast<std::chrono::microseconds>(
        std::chrono::steady_clock::now() - start);
    const long cpu = (usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1000000L +
                     usage.ru_utime.tv_usec + usage.ru_stime.tv_usec;
    std::printf("%lld %ld\n", static_cast<long long>(wall.count()), cpu);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}
