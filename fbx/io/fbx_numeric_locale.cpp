#include "fbx/io/fbx_numeric_locale.h"

FbxNumericLocaleScope::FbxNumericLocaleScope() {
    locale_t current = uselocale((locale_t)0);
    // newlocale consumes its base: start from a copy of what is in force,
    // which may be the global locale.
    locale_t base = duplocale(current);
    if (base == (locale_t)0) return;
    scoped_ = newlocale(LC_NUMERIC_MASK, "C", base);
    if (scoped_ == (locale_t)0) {
        freelocale(base);
        return;
    }
    previous_ = uselocale(scoped_);
}

FbxNumericLocaleScope::~FbxNumericLocaleScope() {
    if (scoped_ == (locale_t)0) return;
    uselocale(previous_);
    freelocale(scoped_);
}
