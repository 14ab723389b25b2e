#pragma once

// A colour of four doubles: red, green, blue and alpha. A default colour is
// opaque black.
class FbxColor {
public:
    FbxColor() = default;
    FbxColor(double red, double green, double blue, double alpha = 1.0)
        : mRed(red), mGreen(green), mBlue(blue), mAlpha(alpha) {}

    bool operator==(const FbxColor& c) const {
        return mRed == c.mRed && mGreen == c.mGreen && mBlue == c.mBlue && mAlpha == c.mAlpha;
    }
    bool operator!=(const FbxColor& c) const { return !(*this == c); }

    double mRed = 0.0;
    double mGreen = 0.0;
    double mBlue = 0.0;
    double mAlpha = 1.0;
};
