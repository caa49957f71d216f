#include "platform/foundation/Bundle.h"

#include "platform/foundation/BundleFiles.h"
#include "platform/foundation/Bundles.h"
#include "platform/foundation/Languages.h"
#include "platform/foundation/StringTable.h"

#include <algorithm>

namespace platform {

namespace {

constexpr std::string_view languageSuffix = ".lproj";

// The name of the directory without its extension.
std::string stemOf(std::string const& path)
{
    auto const name = path.substr(path.rfind('/') + 1);
    auto const dot = name.rfind('.');
    return dot == 0 ? name : name.substr(0, dot);
}

void appendNew(std::vector<std::string>& list, std::string const& text)
{
    if (!text.empty() && std::find(list.begin(), list.end(), text) == list.end())
        list.push_back(text);
}

} // namespace

Bundle::Bundle(Bundles& bundles, BundleFiles& files, std::string path)
    : m_bundles(bundles)
    , m_files(files)
    , m_path(std::move(path))
    , m_layout(BundleLayout::of(m_path, files))
{
}

void Bundle::becomeMain(std::optional<std::string> identifier)
{
    std::lock_guard const lock(m_mutex);
    m_givenIdentifier = std::move(identifier);
    m_isLoaded = true;
}

std::optional<std::string> Bundle::bundleIdentifier() const
{
    {
        std::lock_guard const lock(m_mutex);
        if (m_givenIdentifier)
            return m_givenIdentifier;
    }
    auto identifier = infoText("CFBundleIdentifier");
    return identifier.empty() ? std::nullopt : std::optional<std::string>(std::move(identifier));
}

std::optional<URL> Bundle::privateFrameworksURL() const
{
    return URL::fileURL(m_layout.frameworks, URL::IsDirectory::Yes);
}

std::optional<Value> Bundle::infoValue(std::string const& key) const
{
    auto const dictionary = info();
    auto const entry = dictionary->find(key);
    return entry == dictionary->end() ? std::nullopt : std::optional<Value>(entry->second);
}

std::optional<std::string> Bundle::executablePath() const
{
    auto name = infoText("CFBundleExecutable");
    if (name.empty())
        name = infoText("CFBundleName");
    if (name.empty())
        name = stemOf(m_path);
    for (auto const& folder : m_layout.executableFolders) {
        for (auto const& path : { folder + "/" + name, folder + "/lib" + name + ".so" }) {
            if (m_files.isFile(path))
                return path;
        }
    }
    return std::nullopt;
}

std::string Bundle::localizedString(std::string const& key, std::string_view value, std::string_view tableName) const
{
    auto const dictionary = table(tableName.empty() ? "Localizable" : std::string(tableName));
    auto const entry = dictionary->find(key);
    if (entry != dictionary->end() && entry->second.asText())
        return *entry->second.asText();
    return value.empty() ? key : std::string(value);
}

std::optional<URL> Bundle::urlForResource(std::string const& name, std::string const& extension) const
{
    auto const fileName = extension.empty() ? name : name + "." + extension;
    auto const path
        = resource(fileName, [this](auto const& it) { return m_files.isFile(it) || m_files.isDirectory(it); });
    if (!path)
        return std::nullopt;
    return URL::fileURL(*path, m_files.isFile(*path) ? URL::IsDirectory::No : URL::IsDirectory::Yes);
}

std::optional<NSError> Bundle::loadAndReturnError()
{
    {
        std::lock_guard const lock(m_mutex);
        if (m_isLoaded)
            return std::nullopt;
    }
    auto const executable = executablePath();
    if (!executable)
        return NSError { "Bundle", 1, "There is no executable in \"" + m_path + "\"." };
    // Outside of the lock: code that is loaded runs its own beginnings, which may well ask this bundle for a text.
    auto const loaded = m_files.loadCode(m_path, *executable);
    if (!loaded)
        return loaded.error();
    std::lock_guard const lock(m_mutex);
    m_isLoaded = true;
    return std::nullopt;
}

std::optional<std::string> Bundle::chosenLocalization() const
{
    return chosenLocalization(localizations(), languages());
}

std::optional<std::string> Bundle::chosenLocalization(
    std::vector<std::string> const& offered, std::vector<std::string> const& wished) const
{
    for (auto const& language : wished) {
        if (auto const match = matchingLocalization(language, offered))
            return match;
    }
    for (auto const& language : { infoText("CFBundleDevelopmentRegion"), std::string("en_US") }) {
        if (auto const match = matchingLocalization(language, offered))
            return match;
    }
    return offered.empty() ? std::nullopt : std::optional<std::string>(offered.front());
}

Bundle::SharedDictionary Bundle::info() const
{
    if (auto const dictionary = known(m_layout.info))
        return dictionary;
    return remember(m_layout.info, m_layout.info, parsePropertyList);
}

Bundle::SharedDictionary Bundle::table(std::string const& name) const
{
    if (auto const dictionary = known(name))
        return dictionary;
    auto const path = resource(name + ".strings", [this](auto const& candidate) { return m_files.isFile(candidate); });
    return remember(name, path, parseStringTable);
}

Bundle::SharedDictionary Bundle::known(std::string const& name) const
{
    std::lock_guard const lock(m_mutex);
    auto const entry = m_dictionaries.find(name);
    return entry == m_dictionaries.end() ? nullptr : entry->second;
}

// A file that is not there is an empty dictionary; so is one that is broken, but that is said, once.
Bundle::SharedDictionary Bundle::remember(std::string const& name, std::optional<std::string> const& path,
    Result<Dictionary> (*parse)(std::string_view)) const
{
    auto const bytes = path ? m_files.read(*path) : std::nullopt;
    Result<Dictionary> parsed = bytes ? parse(*bytes) : Result<Dictionary>(Dictionary {});
    auto dictionary = std::make_shared<Dictionary const>(parsed ? parsed.take() : Dictionary {});
    {
        std::lock_guard const lock(m_mutex);
        auto const [entry, isNew] = m_dictionaries.emplace(name, dictionary);
        if (!isNew)
            return entry->second;
    }
    if (!parsed)
        m_files.report(*path + " cannot be used. " + parsed.error().localizedDescription);
    return dictionary;
}

std::string Bundle::infoText(std::string const& key) const
{
    auto const value = infoValue(key);
    return value && value->asText() ? *value->asText() : std::string();
}

std::vector<std::string> Bundle::localizations() const
{
    std::vector<std::string> names;
    auto const listed = infoValue("CFBundleLocalizations");
    for (auto const& value : listed && listed->asList() ? *listed->asList() : List {}) {
        if (value.asText())
            appendNew(names, *value.asText());
    }
    // Sorted, so that the choice does not hang on the order of a directory.
    auto entries = m_files.list(m_layout.resources);
    std::sort(entries.begin(), entries.end());
    bool hasBase = false;
    for (auto const& entry : entries) {
        if (!entry.ends_with(languageSuffix))
            continue;
        auto const name = entry.substr(0, entry.size() - languageSuffix.size());
        hasBase = hasBase || name == "Base";
        if (name != "Base")
            appendNew(names, name);
    }
    if (hasBase)
        appendNew(names, infoText("CFBundleDevelopmentRegion"));
    return names;
}

// What to look for, best first. A framework speaks as the application around it does, unless the application's Info
// lets languages mix.
std::vector<std::string> Bundle::languages() const
{
    std::vector<std::string> wishes;
    auto const main = m_bundles.mainBundle();
    if (main && main.get() != this) {
        auto const mixed = main->infoText("CFBundleAllowMixedLocalizations");
        bool const mayMix = mixed == "YES" || mixed == "true" || mixed == "1";
        appendNew(wishes, mayMix ? std::string() : main->chosenLocalization().value_or(std::string()));
    }
    for (auto const& language : m_files.userLanguages())
        appendNew(wishes, language);
    return wishes;
}

// Outside of the languages first, which then need not be looked for.
std::optional<std::string> Bundle::resource(
    std::string const& fileName, std::function<bool(std::string const&)> const& isWanted) const
{
    auto const path = m_layout.resources + "/" + fileName;
    if (isWanted(path))
        return path;
    for (auto const& name : languageFolders()) {
        auto const localized = m_layout.resources + "/" + name + std::string(languageSuffix) + "/" + fileName;
        if (isWanted(localized))
            return localized;
    }
    return std::nullopt;
}

std::vector<std::string> Bundle::languageFolders() const
{
    auto const offered = localizations();
    auto const wished = languages();
    std::vector<std::string> names;
    appendNew(names, chosenLocalization(offered, wished).value_or(std::string()));
    appendNew(names, "Base");
    for (auto const& language : wished)
        appendNew(names, matchingLocalization(language, offered).value_or(std::string()));
    appendNew(names, infoText("CFBundleDevelopmentRegion"));
    return names;
}

} // namespace platform
