#include "backends/linux/host/BookmarkData.h"

#include <string_view>
#include <utility>

namespace backends {

using platform::Data;
using platform::NSError;

namespace {

// "Paneweld bookmark", the version of what follows, the bytes of that, and their check sum.
constexpr std::string_view mark = "PWBM";
constexpr std::uint8_t version = 1;
constexpr std::size_t mostSteps = 4096;

NSError refused(char const* why) { return { "Bookmarks", 259, why }; }

// FNV-1a, against accidents.
std::uint64_t checkSumOf(std::uint8_t const* bytes, std::size_t count)
{
    std::uint64_t sum = 0xcbf29ce484222325;
    for (std::size_t i = 0; i < count; ++i)
        sum = (sum ^ bytes[i]) * 0x100000001b3;
    return sum;
}

class Writer {
public:
    void number(std::uint64_t value, int bytes)
    {
        for (int i = 0; i < bytes; ++i)
            m_bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    }
    template<typename Bytes>
    void bytes(Bytes const& bytes)
    {
        number(bytes.size(), 4);
        m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
    }
    void identity(FileIdentity const& identity)
    {
        number(identity.inode, 8);
        number(static_cast<std::uint64_t>(identity.birth), 8);
        number(static_cast<std::uint32_t>(identity.handleType), 4);
        bytes(identity.handle);
    }
    std::vector<std::uint8_t> take() { return std::move(m_bytes); }

private:
    std::vector<std::uint8_t> m_bytes;
};

// Once something is missing everything after it is, and nothing counts.
class Reader {
public:
    explicit Reader(std::vector<std::uint8_t> const& bytes, std::size_t from, std::size_t to)
        : m_bytes(bytes)
        , m_place(from)
        , m_end(to)
    {
    }

    std::uint64_t number(int bytes)
    {
        auto const count = static_cast<std::size_t>(bytes);
        if (m_end - m_place < count) {
            m_isShort = true;
            return 0;
        }
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < count; ++i)
            value |= std::uint64_t { m_bytes[m_place + i] } << (8 * i);
        m_place += count;
        return value;
    }
    template<typename Bytes>
    Bytes bytes()
    {
        auto const count = number(4);
        if (count > m_end - m_place) {
            m_isShort = true;
            return {};
        }
        auto const start = m_bytes.begin() + static_cast<std::ptrdiff_t>(m_place);
        m_place += count;
        return Bytes(start, start + static_cast<std::ptrdiff_t>(count));
    }
    FileIdentity identity()
    {
        FileIdentity identity;
        identity.inode = number(8);
        identity.birth = static_cast<std::int64_t>(number(8));
        identity.handleType = static_cast<std::int32_t>(static_cast<std::uint32_t>(number(4)));
        identity.handle = bytes<std::vector<std::uint8_t>>();
        return identity;
    }
    bool isShort() const { return m_isShort; }
    bool isAtEnd() const { return !m_isShort && m_place == m_end; }

private:
    std::vector<std::uint8_t> const& m_bytes;
    std::size_t m_place;
    std::size_t m_end;
    bool m_isShort = false;
};

// A name of a folder's entry, and no way out of it.
bool isName(std::string const& name)
{
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos
        && name.find('\0') == std::string::npos;
}

bool isPath(std::string const& path) { return path.starts_with('/') && path.find('\0') == std::string::npos; }

} // namespace

bool VolumeIdentity::isSameAs(VolumeIdentity const& other) const
{
    if (type != other.type)
        return false;
    return !uuid.empty() && !other.uuid.empty() ? uuid == other.uuid : number == other.number;
}

bool FileIdentity::isSameAs(FileIdentity const& other) const
{
    if (inode != other.inode)
        return false;
    bool const hasBirths = birth != 0 && other.birth != 0;
    bool const hasHandles = !handle.empty() && handleType == other.handleType;
    if ((hasBirths && birth != other.birth) || (hasHandles && handle != other.handle))
        return false;
    // A number alone may have been given to another file since.
    return hasBirths || hasHandles;
}

Data encodeBookmark(BookmarkData const& bookmark)
{
    Writer body;
    body.bytes(bookmark.path);
    body.bytes(bookmark.pathInVolume);
    body.bytes(bookmark.volume.type);
    body.bytes(bookmark.volume.uuid);
    body.number(bookmark.volume.number, 8);
    body.number(bookmark.steps.size(), 4);
    for (auto const& step : bookmark.steps) {
        body.bytes(step.name);
        body.identity(step.identity);
    }
    return sealBookmark(body.take());
}

Data sealBookmark(std::vector<std::uint8_t> const& body)
{
    Writer whole;
    for (char const letter : mark)
        whole.number(static_cast<std::uint8_t>(letter), 1);
    whole.number(version, 1);
    whole.bytes(body);
    whole.number(checkSumOf(body.data(), body.size()), 8);
    return { whole.take() };
}

platform::Result<BookmarkData> decodeBookmark(Data const& data)
{
    auto const& bytes = data.bytes;
    Reader head(bytes, 0, bytes.size());
    for (char const letter : mark) {
        if (head.number(1) != static_cast<std::uint8_t>(letter))
            return refused("no bookmark");
    }
    if (head.number(1) != version)
        return refused("a bookmark of another version");
    auto const body = head.bytes<std::vector<std::uint8_t>>();
    auto const sum = head.number(8);
    if (!head.isAtEnd())
        return refused("a bookmark of another length");
    if (sum != checkSumOf(body.data(), body.size()))
        return refused("a bookmark that was changed");

    Reader reader(body, 0, body.size());
    BookmarkData bookmark;
    bookmark.path = reader.bytes<std::string>();
    bookmark.pathInVolume = reader.bytes<std::string>();
    bookmark.volume.type = reader.bytes<std::string>();
    bookmark.volume.uuid = reader.bytes<std::string>();
    bookmark.volume.number = reader.number(8);
    auto const count = reader.number(4);
    if (count > mostSteps)
        return refused("a bookmark that leads too far");
    for (std::uint64_t i = 0; i < count && !reader.isShort(); ++i) {
        BookmarkData::Step step;
        step.name = reader.bytes<std::string>();
        step.identity = reader.identity();
        if (!isName(step.name))
            return refused("a bookmark with a name that is none");
        bookmark.steps.push_back(std::move(step));
    }
    if (!reader.isAtEnd() || !isPath(bookmark.path) || !isPath(bookmark.pathInVolume))
        return refused("a bookmark that cannot be read");
    return bookmark;
}

} // namespace backends
