#pragma once

#include "platform/foundation/Result.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace backends {

// A file's bytes as they are on the disk, without a copy. What is mapped stays when the name goes.
class MappedFile {
public:
    static platform::Result<MappedFile> open(std::string const& path);
    ~MappedFile();
    MappedFile(MappedFile&& other) noexcept;
    MappedFile& operator=(MappedFile&& other) noexcept;

    // Empty for an empty file.
    std::span<std::uint8_t const> bytes() const { return { m_bytes, m_size }; }

private:
    MappedFile(std::uint8_t const* bytes, std::size_t size)
        : m_bytes(bytes)
        , m_size(size)
    {
    }

    std::uint8_t const* m_bytes;
    std::size_t m_size;
};

} // namespace backends
