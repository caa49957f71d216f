#pragma once

#include "backends/linux/host/Descriptor.h"

#include <string>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

namespace backends {

// What starting and watching programs takes of C and of the kernel.

// As C takes a list of texts: ended by null, valid as long as the texts.
inline std::vector<char*> pointersTo(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    for (auto& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

// Readable when the process has ended (pidfd_open(2)). None, with the cause in errno(3), when there is no such process.
inline Descriptor openProcess(int process) { return Descriptor(static_cast<int>(syscall(SYS_pidfd_open, process, 0))); }

} // namespace backends
