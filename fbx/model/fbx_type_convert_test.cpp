#include "fbx/model/fbx_type_convert.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "fbx/model/fbx_data_type.h"

namespace {

template <class From, class To>
bool Convert(const From& from, To& to) {
    return FbxTypeConvert(&from, FbxTypeOf<From>::value, &to, FbxTypeOf<To>::value);
}

TEST(FbxTypeConvert, NumbersConvertToOneAnotherWithClamping) {
    int i = 0;
    EXPECT_TRUE(Convert(3.9, i));
    EXPECT_EQ(i, 3);
    EXPECT_TRUE(Convert(-1e300, i));
    EXPECT_EQ(i, std::numeric_limits<int>::min());
    EXPECT_TRUE(Convert(std::nan(""), i));
    EXPECT_EQ(i, 0);
    FbxUChar u = 0;
    EXPECT_TRUE(Convert(300.0, u));
    EXPECT_EQ(u, 255);
    bool b = false;
    EXPECT_TRUE(Convert(0.25, b));
    EXPECT_TRUE(b);
    double d = 0;
    EXPECT_TRUE(Convert(FbxULongLong(~0ULL), d));
    EXPECT_EQ(d, 18446744073709551615.0);
    EXPECT_TRUE(Convert(FbxTime(46186158000LL), d));
    EXPECT_EQ(d, 46186158000.0);
    FbxHalfFloat h;
    EXPECT_TRUE(Convert(1.5, h));
    EXPECT_TRUE(Convert(h, d));
    EXPECT_EQ(d, 1.5);
    FbxDouble3 v;
    EXPECT_TRUE(Convert(2, v));
    EXPECT_EQ(v, FbxDouble3(2, 2, 2));
    FbxDouble2 v2;
    EXPECT_TRUE(Convert(FbxDouble4(1, 2, 3, 4), v2));
    EXPECT_EQ(v2, FbxDouble2(1, 2));
}

TEST(FbxTypeConvert, ValuesGoToTextAndBack) {
    FbxString s;
    EXPECT_TRUE(Convert(true, s));
    EXPECT_EQ(s, "true");
    EXPECT_TRUE(Convert(0.1, s));
    EXPECT_EQ(s, "0.1");
    EXPECT_TRUE(Convert(FbxDouble3(1, -2.5, 1e20), s));
    EXPECT_EQ(s, "1,-2.5,1e+20");
    EXPECT_TRUE(Convert(FbxLongLong(-42), s));
    EXPECT_EQ(s, "-42");
    FbxDateTime date;
    date.year = 2024;
    date.month = 2;
    date.day = 29;
    date.hour = 13;
    EXPECT_TRUE(Convert(date, s));
    EXPECT_EQ(s, "2024-02-29 13:00:00:000");
    FbxDateTime back;
    EXPECT_TRUE(Convert(s, back));
    EXPECT_EQ(back, date);

    bool b = true;
    EXPECT_TRUE(Convert(FbxString("FALSE"), b));
    EXPECT_FALSE(b);
    FbxULongLong big = 0;
    EXPECT_TRUE(Convert(FbxString("18446744073709551615"), big));
    EXPECT_EQ(big, ~0ULL);
    FbxDouble4x4 m;
    EXPECT_TRUE(Convert(FbxString("1,0,0,0, 0,1,0,0, 0,0,1,0, 5,6,7,1"), m));
    EXPECT_EQ(m.At(3, 1), 6.0);
    FbxDistance distance;
    EXPECT_TRUE(Convert(FbxString("2.5 cm"), distance));
    EXPECT_EQ(distance.value, 2.5f);
    EXPECT_EQ(distance.unit, "cm");

    // Text that does not parse leaves the target as it was.
    double d = 8.0;
    EXPECT_FALSE(Convert(FbxString("1.5x"), d));
    EXPECT_FALSE(Convert(FbxString(""), d));
    EXPECT_FALSE(Convert(FbxString("1,2,3"), d));
    EXPECT_EQ(d, 8.0);
    FbxDouble3 v(1, 1, 1);
    EXPECT_FALSE(Convert(FbxString("1,2,3,4"), v));
    EXPECT_FALSE(Convert(FbxString("1,,3"), v));
    EXPECT_EQ(v, FbxDouble3(1, 1, 1));
    EXPECT_FALSE(Convert(FbxString("2024-13x"), back));
}

TEST(FbxTypeConvert, ConversionsThatMakeNoSenseFail) {
    double d = 1.0;
    EXPECT_FALSE(Convert(FbxDouble3(1, 2, 3), d));
    EXPECT_FALSE(Convert(FbxDouble4x4(), d));
    FbxDouble4x4 m;
    EXPECT_FALSE(Convert(FbxDouble4(), m));
    FbxBlob blob(reinterpret_cast<const uint8_t*>("abc"), 3);
    FbxString s = "keep";
    EXPECT_FALSE(Convert(blob, s));
    EXPECT_EQ(s, "keep");
    FbxBlob copy;
    EXPECT_TRUE(Convert(blob, copy));
    EXPECT_EQ(copy, blob);
    EXPECT_FALSE(Convert(blob, d));
    EXPECT_FALSE(FbxTypeConvert(&d, eFbxDouble, &d, eFbxReference));
    EXPECT_FALSE(FbxTypeConvert(&d, eFbxUndefined, &d, eFbxDouble));
    EXPECT_FALSE(FbxTypeConvert(nullptr, eFbxDouble, &d, eFbxDouble));
    EXPECT_FALSE(FbxTypeConvert(&d, static_cast<EFbxType>(99), &d, eFbxDouble));
    EXPECT_EQ(d, 1.0);
}

TEST(FbxHalfFloat, RoundTripsAndRounds) {
    for (float f : {0.0f, -0.0f, 1.0f, -2.5f, 65504.0f, 0.000061035156f, 5.9604645e-08f})
        EXPECT_EQ(FbxHalfFloat(f).Value(), f) << f;
    EXPECT_TRUE(std::isinf(FbxHalfFloat(1e6f).Value()));
    EXPECT_TRUE(std::isnan(FbxHalfFloat(std::nanf("")).Value()));
    EXPECT_EQ(FbxHalfFloat(1.0f + 1.0f / 4096).Value(), 1.0f);  // rounds to even
}

TEST(FbxDataType, NamesSpellingsAndCreatedTypes) {
    EXPECT_EQ(FbxDataTypeTable::FromName("Vector"), FbxDouble3DT);
    EXPECT_EQ(FbxDataTypeTable::FromName("Vector3D"), FbxDouble3DT);
    EXPECT_EQ(FbxDataTypeTable::FromName("ColorRGB"), FbxColor3DT);
    EXPECT_EQ(FbxDataTypeTable::FromName("double"), FbxDoubleDT);
    EXPECT_EQ(FbxDataTypeTable::FromName("bool"), FbxBoolDT);
    EXPECT_EQ(FbxDataTypeTable::FromName("KTime"), FbxTimeDT);
    EXPECT_EQ(FbxDataTypeTable::FromName("matrix4x4"), FbxDouble4x4DT);
    EXPECT_EQ(FbxDataTypeTable::FromName("Lcl Translation").GetType(), eFbxDouble3);
    EXPECT_EQ(FbxDataTypeTable::FromName("TextLine").GetType(), eFbxString);
    EXPECT_EQ(FbxDataTypeTable::FromName("LayerElementUV").GetType(), eFbxDouble2);
    EXPECT_EQ(FbxDataTypeTable::FromName("stringlist").GetType(), eFbxEnum);
    EXPECT_EQ(FbxDataTypeTable::FromName("TimeCode").GetType(), eFbxDouble3);
    // Color and Vector share a base type but are different data types.
    EXPECT_NE(FbxColor3DT, FbxDouble3DT);
    EXPECT_FALSE(FbxDataTypeTable::FromName("vector").Valid());
    EXPECT_FALSE(FbxDataTypeTable::FromName("").Valid());
    EXPECT_FALSE(FbxDataTypeTable::FromName(nullptr).Valid());
    EXPECT_STREQ(FbxDataType().GetName(), "");
    EXPECT_EQ(FbxDataTypeTable::FixedCount(), 34 + 78);

    FbxDataType made = FbxDataTypeTable::Create("MyDistance", eFbxDistance);
    EXPECT_TRUE(made.Valid());
    EXPECT_STREQ(made.GetName(), "MyDistance");
    EXPECT_EQ(FbxDataTypeTable::FromName("MyDistance"), made);
    EXPECT_EQ(FbxDataTypeTable::Create("MyDistance", eFbxDistance), made);
    EXPECT_FALSE(FbxDataTypeTable::Create("", eFbxDouble).Valid());
    EXPECT_FALSE(FbxDataTypeTable::Create("Bad", static_cast<EFbxType>(40)).Valid());
    FbxDataTypeTable::ReleaseCreated();
    EXPECT_FALSE(FbxDataTypeTable::FromName("MyDistance").Valid());
}

}  // namespace
