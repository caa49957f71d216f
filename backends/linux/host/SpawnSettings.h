#pragma once

#include <spawn.h>
#include <string>
#include <vector>

namespace backends {

// How a child of this library starts (posix_spawn(3)): it reads nothing from the host's terminal, and signals do what
// they usually do. Freed in any case.
struct SpawnSettings {
    posix_spawn_file_actions_t actions {};
    posix_spawnattr_t attributes {};

    SpawnSettings();
    ~SpawnSettings();
    SpawnSettings(SpawnSettings const&) = delete;
    SpawnSettings& operator=(SpawnSettings const&) = delete;

    // A group of its own, so that it can be ended with everything that it has started.
    void makeGroup();
};

// As C takes a list of texts: ended by null, valid as long as the texts.
std::vector<char*> pointersTo(std::vector<std::string>& texts);

// A descriptor that is readable when the child has ended (pidfd_open(2)), or -1 with errno. Closed at an exec.
int openProcess(int process);

} // namespace backends
