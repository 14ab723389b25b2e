#include "fbx/io/fbx_numeric_locale.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

namespace {

TEST(FbxNumericLocale, NumbersUseAPointInsideAndTheLocaleReturnsAfter) {
    locale_t mine = newlocale(LC_ALL_MASK, "C.UTF-8", (locale_t)0);
    if (mine == (locale_t)0) mine = newlocale(LC_ALL_MASK, "POSIX", (locale_t)0);
    ASSERT_NE(mine, (locale_t)0);
    locale_t before = uselocale(mine);
    {
        FbxNumericLocaleScope scope;
        ASSERT_TRUE(scope.IsActive());
        EXPECT_NE(uselocale((locale_t)0), mine);
        EXPECT_STREQ(localeconv()->decimal_point, ".");
        EXPECT_DOUBLE_EQ(std::strtod("2.5", nullptr), 2.5);
        {
            FbxNumericLocaleScope nested;
            EXPECT_TRUE(nested.IsActive());
        }
        EXPECT_STREQ(localeconv()->decimal_point, ".");
    }
    EXPECT_EQ(uselocale((locale_t)0), mine);
    uselocale(before);
    freelocale(mine);
}

}  // namespace
