#include "platform/log/OSLog.h"

#include <gtest/gtest.h>

using platform::logMessage;

TEST(LogMessage, ShowsPublicTextsAndHidesTheOthers)
{
    EXPECT_EQ(logMessage("id=%{public}s class=%s", { "b1", "Window" }, false), "id=b1 class=<private>");
    EXPECT_EQ(logMessage("id=%{public}s class=%s", { "b1", "Window" }, true), "id=b1 class=Window");
    EXPECT_EQ(logMessage("%{private}s", { "x" }, false), "<private>");
}

TEST(LogMessage, ShowsNumbersUnlessTheyAreMarkedPrivate)
{
    EXPECT_EQ(logMessage("count=%lld code=%{public}u", { std::int64_t { -3 }, std::uint64_t { 7 } }, false),
        "count=-3 code=7");
    EXPECT_EQ(logMessage("%{private}u", { std::uint64_t { 7 } }, false), "<private>");
}

TEST(LogMessage, SurvivesFormatsThatDoNotFitTheirArguments)
{
    EXPECT_EQ(logMessage("100%% %s", {}, true), "100% ");
    EXPECT_EQ(logMessage("%{public", { "x" }, true), "xpublic");
    EXPECT_EQ(logMessage("%", { "x" }, true), "x");
    EXPECT_EQ(logMessage("none", { "x" }, true), "none");
    EXPECT_EQ(logMessage("", {}, true), "");
}
