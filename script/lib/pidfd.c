// Loaded before the C library when a test runs under a valgrind that does not know pidfd_open(2): a thread waits for
// the process and makes a descriptor of a pipe readable, so that the test does what it does without valgrind.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <stdarg.h>
#include <stdlib.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#define DESCRIPTORS 1024

static pid_t processes[DESCRIPTORS]; // by the end of the pipe that the program has

struct watch {
    pid_t process;
    int end;
};

static void* wait_for(void* argument)
{
    struct watch const watch = *(struct watch*)argument;
    free(argument);
    siginfo_t info;
    // It stays for the program to be collected. Another's child cannot be waited for and is looked at.
    while (waitid(P_PID, watch.process, &info, WEXITED | WNOWAIT) != 0 && errno != ECHILD) { }
    while (errno == ECHILD && kill(watch.process, 0) == 0)
        usleep(10000);
    char const byte = 0;
    (void)!write(watch.end, &byte, 1);
    close(watch.end);
    return NULL;
}

static long open_process(pid_t process)
{
    int ends[2];
    if (kill(process, 0) != 0 || pipe2(ends, O_CLOEXEC) != 0)
        return -1;
    struct watch* const watch = malloc(sizeof *watch);
    watch->process = process;
    watch->end = ends[1];
    processes[ends[0] % DESCRIPTORS] = process;
    pthread_t thread;
    sigset_t all, before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    pthread_create(&thread, NULL, wait_for, watch);
    pthread_detach(thread);
    pthread_sigmask(SIG_SETMASK, &before, NULL);
    return ends[0];
}

// Those that are not there are handed on as they are found; nobody looks at them.
long syscall(long number, ...)
{
    va_list list;
    va_start(list, number);
    long argument[6];
    for (int i = 0; i < 6; ++i)
        argument[i] = va_arg(list, long);
    va_end(list);
    // Its own end is watched by programs that it leaves behind, which no thread of it can serve.
    if (number == SYS_pidfd_open && argument[0] != getpid())
        return open_process((pid_t)argument[0]);
    static long (*real)(long, ...);
    if (!real)
        *(void**)&real = dlsym(RTLD_NEXT, "syscall");
    return real(number, argument[0], argument[1], argument[2], argument[3], argument[4], argument[5]);
}

int waitid(idtype_t kind, id_t id, siginfo_t* info, int options)
{
    static int (*real)(idtype_t, id_t, siginfo_t*, int);
    if (!real)
        *(void**)&real = dlsym(RTLD_NEXT, "waitid");
    return kind == P_PIDFD ? real(P_PID, (id_t)processes[id % DESCRIPTORS], info, options)
                           : real(kind, id, info, options);
}
