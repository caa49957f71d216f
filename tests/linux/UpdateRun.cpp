#include "tests/linux/UpdateRun.h"

#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <utility>

namespace paneweld_tests {

std::string update(backends::UpdateTarget const& target, std::string const& archive, backends::UpdateItem const& item,
    std::vector<std::string> const& keys, backends::UpdateInstaller::Step atStep)
{
    backends::UpdateInstaller installer(target, std::move(atStep));
    auto const place = installer.prepare();
    if (!place)
        return place.error().localizedDescription;
    std::ofstream(place.value(), std::ios::binary) << archive;
    auto problem = installer.verify(item, keys);
    if (!problem)
        problem = installer.install({ "org.example.Ideas", item.version });
    return problem ? problem->localizedDescription : std::string();
}

mode_t modeOf(std::string const& path)
{
    struct stat facts { };
    EXPECT_EQ(stat(path.c_str(), &facts), 0) << path;
    return facts.st_mode & 07777;
}

} // namespace paneweld_tests
