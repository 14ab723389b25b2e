#pragma once

#include <locale.h>

// Puts the numeric category of the calling thread's locale to "C" for the
// scope's length and restores the previous locale at its end, so that
// numbers in text parse and print with a point whatever the program's
// locale is. Built on newlocale/uselocale: other threads keep theirs.
class FbxNumericLocaleScope {
public:
    FbxNumericLocaleScope();
    ~FbxNumericLocaleScope();
    FbxNumericLocaleScope(const FbxNumericLocaleScope&) = delete;
    FbxNumericLocaleScope& operator=(const FbxNumericLocaleScope&) = delete;

    // False when the "C" numeric locale could not be made; the scope then
    // changes nothing.
    bool IsActive() const { return scoped_ != (locale_t)0; }

private:
    locale_t previous_ = (locale_t)0;
    locale_t scoped_ = (locale_t)0;
};
