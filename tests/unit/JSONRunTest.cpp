#include "platform/foundation/JSONRun.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace platform {

// One byte at a time is the judge. The text ends where its memory ends, so that reading beyond it would be told.
TEST(JSONRun, AnyByteAtAnyPlaceOfAnyLengthIsFound)
{
    for (std::size_t size = 0; size <= 40; ++size) {
        auto const bytes = std::make_unique<char[]>(size);
        std::fill_n(bytes.get(), size, 'a');
        std::string_view const text(bytes.get(), size);
        EXPECT_TRUE(isPlainInJSON(text)) << size;
        EXPECT_EQ(plainJSONRun(text), size);
        for (std::size_t place = 0; place < size; ++place) {
            for (int byte = 0; byte < 256; ++byte) {
                auto const character = bytes[place] = static_cast<char>(byte);
                ASSERT_EQ(isPlainInJSON(text), isPlainInJSON(character)) << byte << " at " << place << " of " << size;
                ASSERT_EQ(plainJSONRun(text), isPlainInJSON(character) ? size : place) << byte << " of " << size;
            }
            bytes[place] = 'a';
        }
    }
}

} // namespace platform
