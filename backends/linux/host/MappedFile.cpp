#include "backends/linux/host/MappedFile.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace backends {

namespace {

platform::NSError systemError(std::string const& path)
{
    return { "NSPOSIXErrorDomain", errno, path + ": " + std::strerror(errno) };
}

} // namespace

platform::Result<MappedFile> MappedFile::open(std::string const& path)
{
    int const descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (descriptor < 0)
        return systemError(path);
    struct stat facts { };
    if (fstat(descriptor, &facts) != 0 || !S_ISREG(facts.st_mode)) {
        close(descriptor);
        return platform::NSError { "NSPOSIXErrorDomain", EINVAL, path + " is no file" };
    }
    auto const size = static_cast<std::size_t>(facts.st_size);
    if (size == 0) {
        close(descriptor);
        return MappedFile(nullptr, 0);
    }
    void* const bytes = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, descriptor, 0);
    auto const failure = systemError(path);
    close(descriptor);
    if (bytes == MAP_FAILED)
        return failure;
    madvise(bytes, size, MADV_SEQUENTIAL);
    return MappedFile(static_cast<std::uint8_t const*>(bytes), size);
}

MappedFile::~MappedFile()
{
    if (m_bytes)
        munmap(const_cast<std::uint8_t*>(m_bytes), m_size);
}

MappedFile::MappedFile(MappedFile&& other) noexcept
    : m_bytes(std::exchange(other.m_bytes, nullptr))
    , m_size(std::exchange(other.m_size, 0))
{
}

MappedFile& MappedFile::operator=(MappedFile&& other) noexcept
{
    std::swap(m_bytes, other.m_bytes);
    std::swap(m_size, other.m_size);
    return *this;
}

} // namespace backends
