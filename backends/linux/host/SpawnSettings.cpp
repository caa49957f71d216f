#include "backends/linux/host/SpawnSettings.h"

#include <csignal>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace backends {

SpawnSettings::SpawnSettings()
{
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_init(&attributes);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    sigset_t none {};
    sigemptyset(&none);
    sigset_t all {};
    sigfillset(&all);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &all);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
}

SpawnSettings::~SpawnSettings()
{
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
}

void SpawnSettings::makeGroup()
{
    posix_spawnattr_setpgroup(&attributes, 0);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
}

std::vector<char*> pointersTo(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    for (auto& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

int openProcess(int process) { return static_cast<int>(syscall(SYS_pidfd_open, process, 0)); }

} // namespace backends
