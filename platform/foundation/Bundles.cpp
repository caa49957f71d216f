#include "platform/foundation/Bundles.h"

#include "platform/foundation/Bundle.h"
#include "platform/foundation/BundleFiles.h"

#include <algorithm>

namespace platform {

void Bundles::setMainBundle(std::string const& folder, std::optional<std::string> identifier)
{
    auto main = bundleAt(folder);
    main->becomeMain(std::move(identifier));
    std::lock_guard const lock(m_mutex);
    m_main = std::move(main);
}

std::shared_ptr<Bundle> Bundles::mainBundle() const
{
    std::lock_guard const lock(m_mutex);
    return m_main;
}

std::shared_ptr<Bundle> Bundles::bundle(URL const& url)
{
    auto const path = url.filePath();
    if (!path || !m_files.isDirectory(*path))
        return nullptr;
    return bundleAt(*path);
}

std::vector<std::shared_ptr<Bundle>> Bundles::allFrameworks() const
{
    std::lock_guard const lock(m_mutex);
    std::vector<std::shared_ptr<Bundle>> frameworks;
    std::copy_if(m_bundles.begin(), m_bundles.end(), std::back_inserter(frameworks),
        [](auto const& bundle) { return bundle->bundlePath().ends_with(".framework"); });
    return frameworks;
}

std::shared_ptr<Bundle> Bundles::bundleAt(std::string path)
{
    while (path.size() > 1 && path.ends_with('/'))
        path.pop_back();
    std::lock_guard const lock(m_mutex);
    auto const known = std::find_if(
        m_bundles.begin(), m_bundles.end(), [&](auto const& bundle) { return bundle->bundlePath() == path; });
    if (known != m_bundles.end())
        return *known;
    return m_bundles.emplace_back(std::make_shared<Bundle>(*this, m_files, std::move(path)));
}

} // namespace platform
