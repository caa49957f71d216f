#include "examples/brainstorm/KeyFile.h"

#include <iostream>
#include <limits>

namespace ideas {

namespace {

std::vector<std::string> takeTexts(char** list)
{
    std::vector<std::string> result;
    for (char** text = list; text && *text; ++text)
        result.emplace_back(*text);
    g_strfreev(list);
    return result;
}

} // namespace

KeyFile::KeyFile()
    : m_file(g_key_file_new())
{
}

KeyFile::~KeyFile() { g_key_file_free(m_file); }

void KeyFile::load(std::string const& path)
{
    g_key_file_load_from_file(m_file, path.c_str(), G_KEY_FILE_NONE, nullptr);
}

void KeyFile::save(std::string const& path) const
{
    OwnedText const folder(g_path_get_dirname(path.c_str()));
    g_mkdir_with_parents(folder.get(), 0700);
    GError* error = nullptr;
    if (g_key_file_save_to_file(m_file, path.c_str(), &error))
        return;
    std::cerr << "ideas: cannot write " << path << ": " << error->message << '\n';
    g_error_free(error);
}

std::vector<std::string> KeyFile::groups() const { return takeTexts(g_key_file_get_groups(m_file, nullptr)); }

bool KeyFile::flag(char const* group, char const* key, bool fallback) const
{
    GError* error = nullptr;
    bool const value = g_key_file_get_boolean(m_file, group, key, &error);
    if (!error)
        return value;
    g_error_free(error);
    return fallback;
}

std::string KeyFile::text(char const* group, char const* key) const
{
    OwnedText const text(g_key_file_get_string(m_file, group, key, nullptr));
    return text ? text.get() : "";
}

long KeyFile::number(char const* group, char const* key) const
{
    return static_cast<long>(g_key_file_get_int64(m_file, group, key, nullptr));
}

std::optional<std::uint32_t> KeyFile::unsignedNumber(char const* group, char const* key) const
{
    GError* error = nullptr;
    auto const number = g_key_file_get_uint64(m_file, group, key, &error);
    if (!error && number <= std::numeric_limits<std::uint32_t>::max())
        return static_cast<std::uint32_t>(number);
    g_clear_error(&error);
    return std::nullopt;
}

std::vector<std::string> KeyFile::texts(char const* group, char const* key) const
{
    return takeTexts(g_key_file_get_string_list(m_file, group, key, nullptr, nullptr));
}

void KeyFile::setFlag(char const* group, char const* key, bool flag)
{
    g_key_file_set_boolean(m_file, group, key, flag);
}

void KeyFile::setText(char const* group, char const* key, std::string const& text)
{
    g_key_file_set_string(m_file, group, key, text.c_str());
}

void KeyFile::setNumber(char const* group, char const* key, long number)
{
    g_key_file_set_int64(m_file, group, key, number);
}

void KeyFile::setTexts(char const* group, char const* key, std::vector<std::string> const& texts)
{
    std::vector<char const*> pointers;
    for (auto const& text : texts)
        pointers.push_back(text.c_str());
    g_key_file_set_string_list(m_file, group, key, pointers.data(), pointers.size());
}

} // namespace ideas
