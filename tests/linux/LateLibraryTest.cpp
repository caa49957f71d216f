#include "backends/linux/host/LateLibrary.h"

#include <gtest/gtest.h>
#include <string>

namespace paneweld_tests {

using backends::LateLibrary;

TEST(LateLibrary, FindsWhatTheLibraryHasAndNothingElse)
{
    auto const library = LateLibrary::load("libm.so.6");
    ASSERT_TRUE(library.hasValue());
    double (*hypotenuse)(double, double) = nullptr;
    ASSERT_TRUE(library.value().find("hypot", hypotenuse));
    EXPECT_EQ(hypotenuse(3, 4), 5);
    EXPECT_FALSE(library.value().find("no_such_function", hypotenuse));
    EXPECT_EQ(hypotenuse, nullptr);
}

TEST(LateLibrary, TellsWhyThereIsNone)
{
    auto const library = LateLibrary::load("libnosuchlibrary.so.0");
    ASSERT_FALSE(library.hasValue());
    EXPECT_NE(library.error().localizedDescription.find("libnosuchlibrary.so.0"), std::string::npos);
}

} // namespace paneweld_tests
